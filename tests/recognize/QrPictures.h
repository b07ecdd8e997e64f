#pragma once

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QString>

// QR codes as the `qrencode` program draws them: `moduleSize` pixels a
// module, a quiet zone of four modules. Null when qrencode is missing.
inline QImage qrencode(const QString &payload, int moduleSize)
{
    if (QStandardPaths::findExecutable(QStringLiteral("qrencode")).isEmpty())
        return {};
    QProcess process;
    process.start(QStringLiteral("qrencode"),
                  {QStringLiteral("-s"), QString::number(moduleSize), QStringLiteral("-m"), QStringLiteral("4"),
                   QStringLiteral("-t"), QStringLiteral("PNG"), QStringLiteral("-o"), QStringLiteral("-"), payload});
    if (!process.waitForFinished(10000) || process.exitCode() != 0)
        return {};
    return QImage::fromData(process.readAllStandardOutput(), "PNG").convertToFormat(QImage::Format_RGB32);
}
