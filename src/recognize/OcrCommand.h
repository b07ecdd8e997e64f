#pragma once

#include <QString>
#include <QStringList>

// `glimpso ocr FILE [--json]`: the text and the code in a picture file,
// read right here, with no running copy and no display. Plain: the text
// (the code's payload where there is no text). With --json: one object,
// {"text": ..., "code": ...}, each null when absent.
namespace OcrCommand {

struct Outcome {
    int exitCode = 0; // 0 read, 1 nothing found or the file unreadable, 2 usage
    QString output;
    QString error;
};

// `arguments` are those after the verb.
Outcome run(const QStringList &arguments);

} // namespace OcrCommand
