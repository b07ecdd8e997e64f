#include "recognize/OcrCommand.h"

#include "recognize/TextRecognizer.h"

#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <exception>

namespace OcrCommand {

Outcome run(const QStringList &arguments)
{
    QString path;
    bool json = false;
    for (const QString &argument : arguments) {
        if (argument == u"--json")
            json = true;
        else if (path.isEmpty() && !argument.startsWith(u'-'))
            path = argument;
        else
            return {2, {}, QStringLiteral("glimpso: usage: glimpso ocr FILE [--json]")};
    }
    if (path.isEmpty())
        return {2, {}, QStringLiteral("glimpso: usage: glimpso ocr FILE [--json]")};

    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull())
        return {1, {}, QStringLiteral("glimpso: cannot read %1: %2").arg(path, reader.errorString())};

    TextRecognizer::Result result;
    try {
        TextRecognizer recognizer(QLocale::system().uiLanguages());
        result = recognizer.recognizeNow(image);
    } catch (const std::exception &error) {
        return {1, {}, QStringLiteral("glimpso: couldn't read the text: %1").arg(QString::fromUtf8(error.what()))};
    }

    if (json) {
        QJsonObject object;
        object.insert(QStringLiteral("text"), result.text ? QJsonValue(*result.text) : QJsonValue(QJsonValue::Null));
        object.insert(QStringLiteral("code"), result.code ? QJsonValue(*result.code) : QJsonValue(QJsonValue::Null));
        return {0, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n', {}};
    }
    if (result.text)
        return {0, *result.text + u'\n', {}};
    if (result.code)
        return {0, *result.code + u'\n', {}};
    return {1, {}, QStringLiteral("glimpso: no text found in %1").arg(path)};
}

} // namespace OcrCommand
