// The OCR benchmark's helper:
//   glimpso-ocr-bench make DIR COUNT SEED   writes the screen-text set: sample-NNN.png and
//                                            sample-NNN.txt (the text shown); names.tsv
//   glimpso-ocr-bench score DIR EXT         the character error rate of the texts read into
//                                            sample-NNN.EXT, over the whole set and by kind
//   glimpso-ocr-bench kept DIR EXT          reads every picture with one recognizer, its
//                                            engine loaded once, as the running copy does;
//                                            writes sample-NNN.EXT and prints the time
//   glimpso-ocr-bench codes DIR             barcodes other than QR (ZXing's writer draws
//                                            them): code-NAME.png with code-NAME.code
#include "ScreenText.h"

#include "recognize/TextRecognizer.h"

#define ZX_USE_UTF8 1
#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QMap>
#include <QTextStream>

#include <cstdio>

namespace {

QString readText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

bool writeText(const QString &path, const QString &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text.toUtf8()) >= 0;
}

QStringList samples(const QDir &dir)
{
    return dir.entryList({QStringLiteral("sample-*.png")}, QDir::Files, QDir::Name);
}

int make(const QString &folder, int count, std::uint32_t seed)
{
    QDir().mkpath(folder);
    const QDir dir(folder);
    QString names;
    const QList<ScreenText::Sample> set = ScreenText::makeSet(count, seed);
    for (int i = 0; i < set.size(); ++i) {
        const QString base = QStringLiteral("sample-%1").arg(i, 3, 10, QLatin1Char('0'));
        if (!set[i].image.save(dir.filePath(base + QStringLiteral(".png"))) ||
            !writeText(dir.filePath(base + QStringLiteral(".txt")), set[i].text + u'\n'))
            return 1;
        names += base + u'\t' + set[i].name + u'\n';
    }
    return writeText(dir.filePath(QStringLiteral("names.tsv")), names) ? 0 : 1;
}

int score(const QString &folder, const QString &extension)
{
    const QDir dir(folder);
    QMap<QString, QString> names;
    for (const QString &row : readText(dir.filePath(QStringLiteral("names.tsv"))).split(u'\n', Qt::SkipEmptyParts))
        names[row.section(u'\t', 0, 0)] = row.section(u'\t', 1);
    ScreenText::Score all;
    QMap<QString, ScreenText::Score> byKind, byTheme, bySize;
    for (const QString &png : samples(dir)) {
        const QString base = png.chopped(4);
        const QString expected = readText(dir.filePath(base + QStringLiteral(".txt")));
        const QString read = readText(dir.filePath(base + u'.' + extension));
        all.add(expected, read);
        const QStringList parts = names.value(base).split(u'-');
        // "NNN-theme[-variant]-kind-Face-Spx"
        if (parts.size() >= 5) {
            byKind[parts.at(parts.size() - 3)].add(expected, read);
            byTheme[parts.at(1).startsWith(u"terminal") ? QStringLiteral("terminal") : parts.at(1).section(u'-', 0, 0)]
                .add(expected, read);
            bySize[parts.last()].add(expected, read);
        }
        if (qEnvironmentVariableIsSet("OCR_BENCH_VERBOSE")) {
            ScreenText::Score one;
            one.add(expected, read);
            if (one.edits)
                std::printf("%s %s %.3f\n---\n%s\n+++\n%s\n\n", qPrintable(base), qPrintable(names.value(base)),
                            one.rate(), qPrintable(ScreenText::normalized(expected)),
                            qPrintable(ScreenText::normalized(read)));
        }
    }
    std::printf("cer %.4f edits %lld chars %lld\n", all.rate(), static_cast<long long>(all.edits),
                static_cast<long long>(all.characters));
    const auto show = [](const char *what, const QMap<QString, ScreenText::Score> &scores) {
        std::printf("  %s:", what);
        for (auto it = scores.begin(); it != scores.end(); ++it)
            std::printf(" %s %.3f", qPrintable(it.key()), it.value().rate());
        std::printf("\n");
    };
    show("kind", byKind);
    show("theme", byTheme);
    show("size", bySize);
    return 0;
}

int kept(const QString &folder, const QString &extension)
{
    const QDir dir(folder);
    TextRecognizer recognizer(QLocale::system().uiLanguages());
    QElapsedTimer timer;
    timer.start();
    for (const QString &png : samples(dir)) {
        const TextRecognizer::Result result = recognizer.recognizeNow(QImage(dir.filePath(png)));
        writeText(dir.filePath(png.chopped(4) + u'.' + extension), result.text.value_or(QString()) + u'\n');
    }
    std::printf("%lld\n", static_cast<long long>(timer.elapsed()));
    return 0;
}

// A code drawn `module` pixels a module, dark on white or inverted.
bool writeCode(const QDir &dir, const QString &name, ZXing::BarcodeFormat format, const std::string &payload,
               int module, bool inverted, int height = 0)
{
    ZXing::MultiFormatWriter writer(format);
    writer.setMargin(0);
    const ZXing::BitMatrix matrix = writer.encode(payload, 0, height);
    const int quiet = 10 * module;
    QImage image(matrix.width() * module + 2 * quiet, matrix.height() * module + 2 * quiet, QImage::Format_RGB32);
    image.fill(inverted ? Qt::black : Qt::white);
    for (int y = 0; y < matrix.height(); ++y)
        for (int x = 0; x < matrix.width(); ++x)
            if (matrix.get(x, y))
                for (int dy = 0; dy < module; ++dy)
                    for (int dx = 0; dx < module; ++dx)
                        image.setPixel(quiet + x * module + dx, quiet + y * module + dy,
                                       inverted ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    return image.save(dir.filePath(QStringLiteral("code-%1.png").arg(name))) &&
           writeText(dir.filePath(QStringLiteral("code-%1.code").arg(name)), QString::fromStdString(payload));
}

int codes(const QString &folder)
{
    QDir().mkpath(folder);
    const QDir dir(folder);
    using F = ZXing::BarcodeFormat;
    bool ok = true;
    for (const int module : {1, 2, 3}) {
        ok = ok && writeCode(dir, QStringLiteral("code128-%1px").arg(module), F::Code128, "GLIMPSO-4711-X", module, false, 60);
        ok = ok && writeCode(dir, QStringLiteral("ean13-%1px").arg(module), F::EAN13, "4006381333931", module, false, 60);
        ok = ok && writeCode(dir, QStringLiteral("code39-%1px").arg(module), F::Code39, "ORDER 48213", module, false, 60);
    }
    ok = ok && writeCode(dir, QStringLiteral("code128-2px-inverted"), F::Code128, "GLIMPSO-4711-X", 2, true, 60);
    for (const int module : {2, 4}) {
        ok = ok && writeCode(dir, QStringLiteral("datamatrix-%1px").arg(module), F::DataMatrix, "SN 2024-000187", module, false);
        ok = ok && writeCode(dir, QStringLiteral("aztec-%1px").arg(module), F::Aztec, "https://example.org/ticket/77", module, false);
        ok = ok && writeCode(dir, QStringLiteral("pdf417-%1px").arg(module), F::PDF417, "Boarding pass 12A", module, false);
    }
    return ok ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    // Fonts need a GUI application; no display is needed.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() == 4 && args[0] == u"make")
        return make(args[1], args[2].toInt(), args[3].toUInt());
    if (args.size() == 3 && args[0] == u"score")
        return score(args[1], args[2]);
    if (args.size() == 3 && args[0] == u"kept")
        return kept(args[1], args[2]);
    if (args.size() == 2 && args[0] == u"codes")
        return codes(args[1]);
    std::fprintf(stderr, "usage: glimpso-ocr-bench make DIR COUNT SEED | score DIR EXT | kept DIR EXT | codes DIR\n");
    return 2;
}
