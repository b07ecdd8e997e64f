// `glimpso ocr FILE [--json]` as a program of its own: the front hands the
// verb here, so that reading a picture loads the recognition libraries and
// Qt's core only, not the whole application.
#include "appbase/ConsoleText.h"
#include "appbase/Logging.h"
#include "recognize/OcrCommand.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    Logging::setUp(Logging::Audience::commandLine);
    QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (!arguments.isEmpty() && arguments.first() == u"ocr")
        arguments.removeFirst();
    const OcrCommand::Outcome outcome = OcrCommand::run(arguments);
    ConsoleText::print(stdout, outcome.output);
    ConsoleText::print(stderr, outcome.error);
    return outcome.exitCode;
}
