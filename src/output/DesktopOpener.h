#pragma once

#include <QString>
#include <QUrl>

// What the desktop does with a file or a link: the user's default program
// opens it, or the file manager shows it in its folder.
class DesktopOpener
{
public:
    virtual ~DesktopOpener() = default;
    virtual void open(const QUrl &url) = 0;
    // The file selected in its folder where the file manager can, else the folder opened.
    virtual void reveal(const QString &path) = 0;
};
