#pragma once

// An editor window opened on a capture, as the coordinator sees it: it is
// shown once and reports its outputs and its close through callbacks.
class EditorWindow
{
public:
    virtual ~EditorWindow() = default;
    virtual void present() = 0;
};
