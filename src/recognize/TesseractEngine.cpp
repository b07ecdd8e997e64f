#include "recognize/TesseractEngine.h"

#include "recognize/TesseractLibrary.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutexLocker>

#include <stdexcept>

Q_LOGGING_CATEGORY(lcTesseract, "glimpso.TextRecognizer")

namespace {

// Where the system's models are when nothing says otherwise.
const char *const kSystemFolders[] = {
    "/usr/share/tesseract-ocr/5/tessdata",
    "/usr/share/tesseract-ocr/4.00/tessdata",
    "/usr/share/tessdata",
    "/usr/local/share/tessdata",
};

bool holdsModels(const QString &folder)
{
    return !folder.isEmpty() && !QDir(folder).entryList({QStringLiteral("*.traineddata")}, QDir::Files).isEmpty();
}

TessBaseAPI *api(void *handle)
{
    return static_cast<TessBaseAPI *>(handle);
}

} // namespace

TesseractEngine::TesseractEngine(QString languages, QString dataFolder)
    : m_languages(std::move(languages)), m_dataFolder(dataFolder.isEmpty() ? defaultDataFolder() : std::move(dataFolder))
{
}

TesseractEngine::~TesseractEngine()
{
    if (m_api) {
        m_library->end(api(m_api));
        m_library->destroy(api(m_api));
    }
}

QString TesseractEngine::defaultDataFolder()
{
    const QString prefix = qEnvironmentVariable("TESSDATA_PREFIX");
    if (holdsModels(prefix))
        return prefix;
    if (holdsModels(prefix + QStringLiteral("/tessdata")))
        return prefix + QStringLiteral("/tessdata");
    for (const char *folder : kSystemFolders)
        if (holdsModels(QString::fromLatin1(folder)))
            return QString::fromLatin1(folder);
    return QString::fromLatin1(kSystemFolders[0]);
}

QStringList TesseractEngine::installedLanguages(const QString &dataFolder)
{
    QStringList languages;
    for (const QFileInfo &file : QDir(dataFolder).entryInfoList({QStringLiteral("*.traineddata")}, QDir::Files, QDir::Name))
        if (file.completeBaseName() != u"osd" && file.completeBaseName() != u"equ")
            languages << file.completeBaseName();
    return languages;
}

bool TesseractEngine::load()
{
    QMutexLocker lock(&m_mutex);
    return loadLocked();
}

QString TesseractEngine::failure() const
{
    QMutexLocker lock(&m_mutex);
    return m_failure;
}

bool TesseractEngine::loadLocked()
{
    if (m_api)
        return true;
    if (!m_failure.isEmpty())
        return false;
    m_library = TesseractLibrary::loaded();
    if (!m_library) {
        m_failure = QStringLiteral("the text recognition library (libtesseract 5) is not installed");
        qCCritical(lcTesseract, "%s", qUtf8Printable(m_failure));
        return false;
    }
    TessBaseAPI *engine = m_library->create();
    // Debug output would go to the terminal of whoever started glimpso.
    m_library->setVariable(engine, "debug_file", "/dev/null");
    const QByteArray folder = QFile::encodeName(m_dataFolder);
    const QByteArray languages = m_languages.toUtf8();
    if (m_library->init(engine, folder.constData(), languages.constData(), tesseract::OEM_LSTM_ONLY) != 0) {
        m_library->destroy(engine);
        m_failure = QStringLiteral("the text recognition models for \u201c%1\u201d could not be loaded from %2")
                        .arg(m_languages, m_dataFolder);
        qCCritical(lcTesseract, "%s", qUtf8Printable(m_failure));
        return false;
    }
    m_library->setVariable(engine, "debug_file", "/dev/null");
    // Columns of a listing or a terminal keep their spacing.
    m_library->setVariable(engine, "preserve_interword_spaces", "1");
    qCInfo(lcTesseract, "text recognition models loaded: %s from %s (Tesseract %s)", languages.constData(),
           folder.constData(), m_library->version());
    m_api = engine;
    return true;
}

QList<TesseractEngine::Line> TesseractEngine::readLines(const OcrPreparation::Prepared &prepared)
{
    QMutexLocker lock(&m_mutex);
    if (!loadLocked())
        throw std::runtime_error(m_failure.toStdString());
    QList<Line> lines;
    const QImage &gray = prepared.gray;
    if (gray.isNull() || gray.width() < 3 || gray.height() < 3)
        return lines;
    TessBaseAPI *engine = api(m_api);
    m_library->setPageSegMode(engine, prepared.layout == OcrPreparation::Layout::singleLine ? tesseract::PSM_SINGLE_LINE
                                                                                           : tesseract::PSM_SINGLE_BLOCK);
    m_library->setImage(engine, gray.constBits(), gray.width(), gray.height(), 1, int(gray.bytesPerLine()));
    // Text scaled to its best size reads like print at 300 dpi.
    m_library->setSourceResolution(engine, 300);
    if (m_library->recognize(engine, nullptr) != 0) {
        m_library->clear(engine);
        throw std::runtime_error("the text recognition engine failed on this picture");
    }
    if (TessResultIterator *it = m_library->iterator(engine)) {
        do {
            char *text = m_library->iteratorText(it, tesseract::RIL_TEXTLINE);
            if (!text)
                continue;
            const QString line = QString::fromUtf8(text).trimmed();
            m_library->deleteText(text);
            int left = 0, top = 0, right = 0, bottom = 0;
            m_library->boundingBox(m_library->pageIterator(it), tesseract::RIL_TEXTLINE, &left, &top, &right, &bottom);
            if (!line.isEmpty())
                lines << Line{line, QRectF(QPointF(left, top), QPointF(right, bottom))};
        } while (m_library->iteratorNext(it, tesseract::RIL_TEXTLINE));
        m_library->iteratorDelete(it);
    }
    m_library->clear(engine);
    return lines;
}
