#include "recognize/TesseractEngine.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutexLocker>

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

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

} // namespace

TesseractEngine::TesseractEngine(QString languages, QString dataFolder)
    : m_languages(std::move(languages)), m_dataFolder(dataFolder.isEmpty() ? defaultDataFolder() : std::move(dataFolder))
{
}

TesseractEngine::~TesseractEngine()
{
    if (m_api)
        m_api->End();
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
    auto api = std::make_unique<tesseract::TessBaseAPI>();
    // Debug output would go to the terminal of whoever started glimpso.
    api->SetVariable("debug_file", "/dev/null");
    const QByteArray folder = QFile::encodeName(m_dataFolder);
    const QByteArray languages = m_languages.toUtf8();
    if (api->Init(folder.constData(), languages.constData(), tesseract::OEM_LSTM_ONLY) != 0) {
        m_failure = QStringLiteral("the text recognition models for \u201c%1\u201d could not be loaded from %2")
                        .arg(m_languages, m_dataFolder);
        qCCritical(lcTesseract, "%s", qUtf8Printable(m_failure));
        return false;
    }
    api->SetVariable("debug_file", "/dev/null");
    // Columns of a listing or a terminal keep their spacing.
    api->SetVariable("preserve_interword_spaces", "1");
    qCInfo(lcTesseract, "text recognition models loaded: %s from %s", languages.constData(), folder.constData());
    m_api = std::move(api);
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
    m_api->SetPageSegMode(prepared.layout == OcrPreparation::Layout::singleLine ? tesseract::PSM_SINGLE_LINE
                                                                                : tesseract::PSM_SINGLE_BLOCK);
    if (qEnvironmentVariableIsSet("OCR_PSM"))
        m_api->SetPageSegMode(tesseract::PageSegMode(qEnvironmentVariableIntValue("OCR_PSM")));
    for (const QString &pair : qEnvironmentVariable("OCR_VARS").split(u',', Qt::SkipEmptyParts))
        m_api->SetVariable(pair.section(u'=', 0, 0).toUtf8().constData(), pair.section(u'=', 1).toUtf8().constData());
    m_api->SetImage(gray.constBits(), gray.width(), gray.height(), 1, int(gray.bytesPerLine()));
    // Text scaled to a 30-pixel x-height reads like print at 300 dpi.
    m_api->SetSourceResolution(300);
    if (m_api->Recognize(nullptr) != 0) {
        m_api->Clear();
        throw std::runtime_error("the text recognition engine failed on this picture");
    }
    std::unique_ptr<tesseract::ResultIterator> it(m_api->GetIterator());
    if (it) {
        do {
            std::unique_ptr<char[]> text(it->GetUTF8Text(tesseract::RIL_TEXTLINE));
            if (!text)
                continue;
            const QString line = QString::fromUtf8(text.get()).trimmed();
            int left = 0, top = 0, right = 0, bottom = 0;
            it->BoundingBox(tesseract::RIL_TEXTLINE, &left, &top, &right, &bottom);
            if (!line.isEmpty())
                lines << Line{line, QRectF(QPointF(left, top), QPointF(right, bottom))};
        } while (it->Next(tesseract::RIL_TEXTLINE));
    }
    m_api->Clear();
    return lines;
}
