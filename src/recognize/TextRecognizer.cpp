#include "recognize/TextRecognizer.h"

#include "recognize/CodeReader.h"
#include "recognize/RecognitionLanguages.h"
#include "recognize/TesseractEngine.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QtConcurrent>

Q_DECLARE_LOGGING_CATEGORY(lcTesseract)

TextRecognizer::TextRecognizer(const QStringList &preferredLanguages, const QString &dataFolder)
{
    const QString folder = dataFolder.isEmpty() ? TesseractEngine::defaultDataFolder() : dataFolder;
    QStringList chosen = RecognitionLanguages::choose(preferredLanguages, TesseractEngine::installedLanguages(folder));
    if (chosen.isEmpty())
        chosen << QStringLiteral("eng");
    m_engine = std::make_unique<TesseractEngine>(chosen.join(QLatin1Char('+')), folder);
    // One reading and its code reader at a time, and a warm-up beside them.
    m_pool.setMaxThreadCount(3);
}

TextRecognizer::~TextRecognizer()
{
    m_pool.waitForDone();
}

QString TextRecognizer::languages() const
{
    return m_engine->languages();
}

void TextRecognizer::warmUp()
{
    TesseractEngine *engine = m_engine.get();
    m_pool.start([engine] { engine->load(); });
}

std::optional<QString> TextRecognizer::joinLines(const QStringList &lines)
{
    QStringList kept;
    for (const QString &line : lines)
        if (!line.trimmed().isEmpty())
            kept << line;
    if (kept.isEmpty())
        return std::nullopt;
    return kept.join(QLatin1Char('\n'));
}

QString TextRecognizer::screenCharacters(QString line)
{
    line.replace(QChar(0x2018), QLatin1Char('\'')).replace(QChar(0x2019), QLatin1Char('\''));
    line.replace(QChar(0x201c), QLatin1Char('"')).replace(QChar(0x201d), QLatin1Char('"'));
    line.replace(QStringLiteral(": :"), QStringLiteral("::"));
    return line;
}

TextRecognizer::Result TextRecognizer::recognizeNow(const QImage &image)
{
    Result result;
    if (image.isNull() || image.width() < 2 || image.height() < 2)
        return result;
    QElapsedTimer timer;
    timer.start();
    QFuture<std::optional<CodeReader::Code>> code =
        QtConcurrent::run(&m_pool, [image] { return CodeReader::first(image); });
    QList<TesseractEngine::Line> lines;
    OcrPreparation::Prepared prepared;
    try {
        prepared = OcrPreparation::prepare(image, m_preparation);
        lines = m_engine->readLines(prepared);
        qCInfo(lcTesseract, "read %dx%d: x-height %.1f px, scaled %.2f, %s, %s; %lld ms", image.width(),
               image.height(), prepared.xHeight, prepared.scale, prepared.inverted ? "light on dark" : "dark on light",
               prepared.layout == OcrPreparation::Layout::singleLine ? "one line" : "a block",
               static_cast<long long>(timer.elapsed()));
    } catch (...) {
        code.waitForFinished();
        throw;
    }
    const std::optional<CodeReader::Code> found = code.result();
    QStringList texts;
    for (const TesseractEngine::Line &line : std::as_const(lines)) {
        // The modules of a code read as letters: what lies on the code is
        // no text.
        const QRectF box = prepared.toSource(line.box);
        if (found && !box.isEmpty()) {
            const QRectF over = box.intersected(found->box.adjusted(-4, -4, 4, 4));
            if (over.width() * over.height() >= 0.5 * box.width() * box.height())
                continue;
        }
        texts << screenCharacters(line.text);
    }
    result.text = joinLines(texts);
    if (found)
        result.code = found->text;
    return result;
}

QFuture<TextRecognizer::Result> TextRecognizer::recognize(const QImage &image)
{
    return QtConcurrent::run(&m_pool, [this, image] { return recognizeNow(image); });
}
