#include "app/CaptureLaunchTests.h"

#include "acquire/WindowGrabbing.h"
#include "acquire/WindowList.h"
#include "acquire/WindowTargets.h"
#include "appbase/AppError.h"
#include "recognize/TextRecognizer.h"
#include "settings/HexColor.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImageReader>
#include <QLoggingCategory>
#include <QSaveFile>

#include <exception>
#include <memory>

Q_LOGGING_CATEGORY(lcLaunchTests, "glimpso.LaunchTests")

namespace CaptureLaunchTests {

namespace {

void writeAtomically(const QString &path, const QString &text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        qCWarning(lcLaunchTests, "cannot write %s", qUtf8Printable(path));
}

QString failureText(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return appError->errorDescription();
    return QString::fromUtf8(error.what());
}

} // namespace

WindowRequest parseWindow(const QString &value)
{
    const QStringList fields = value.split(u':');
    WindowRequest request;
    bool ok = false;
    const uint id = fields.value(0).toUInt(&ok);
    if (ok && id != 0)
        request.windowID = id;
    const QString background = fields.value(1);
    if (background != u"transparent")
        request.options.background = HexColor::parse(background).value_or(QColor(Qt::white));
    const double padding = fields.value(2).toDouble(&ok);
    request.options.padding = ok && padding >= 0 ? padding : 48.0;
    request.options.shadow = fields.value(3) != u"0";
    return request;
}

void readText(const QString &path, TextRecognizer &recognizer)
{
    const QImage image = QImageReader(path).read();
    if (image.isNull()) {
        qCInfo(lcLaunchTests, "GLIMPSO_TEST_OCR: %s is no picture", qUtf8Printable(path));
        return;
    }
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    recognizer.recognize(image)
        .then(qApp,
              [path, timer](const TextRecognizer::Result &result) {
                  writeAtomically(path + QStringLiteral(".ocr.txt"),
                                  QStringLiteral("seconds: %1\ntext: %2\ncode: %3\n")
                                      .arg(double(timer->elapsed()) / 1000.0)
                                      .arg(result.text.value_or(QString()), result.code.value_or(QString())));
              })
        .onFailed(qApp, [path](const std::exception &error) {
            writeAtomically(path + QStringLiteral(".ocr.txt"), QStringLiteral("error: %1\n").arg(failureText(error)));
        });
}

void captureWindow(const QString &value, const QString &output, WindowList &windows, WindowGrabbing &grabber,
                   qint64 ownProcessID)
{
    const WindowRequest request = parseWindow(value);
    const QString report = output + QStringLiteral(".txt");
    std::optional<std::uint32_t> id = request.windowID;
    if (!id) {
        const QList<WindowTarget> targets = WindowTargets::select(windows.onScreenEntries(), ownProcessID);
        if (targets.isEmpty()) {
            writeAtomically(report, QStringLiteral("error: no window on the screen\n"));
            return;
        }
        id = targets.first().windowID;
    }
    grabber.prepare();
    const std::uint32_t windowID = *id;
    WindowCapture::capture(grabber, windowID, request.options)
        .then(qApp,
              [output, report, windowID](const RegionCompositor::Composed &shot) {
                  if (!shot.image.save(output, "PNG")) {
                      writeAtomically(report, QStringLiteral("error: cannot write %1\n").arg(output));
                      return;
                  }
                  writeAtomically(report, QStringLiteral("window: %1\nsize: %2x%3\nalpha: %4\n")
                                              .arg(windowID)
                                              .arg(shot.image.width())
                                              .arg(shot.image.height())
                                              .arg(shot.image.hasAlphaChannel() ? QStringLiteral("yes")
                                                                                : QStringLiteral("no")));
              })
        .onFailed(qApp, [report](const std::exception &error) {
            writeAtomically(report, QStringLiteral("error: %1\n").arg(failureText(error)));
        });
}

} // namespace CaptureLaunchTests
