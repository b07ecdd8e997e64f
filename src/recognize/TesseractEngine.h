#pragma once

#include "recognize/OcrPreparation.h"

#include <QList>
#include <QMutex>
#include <QRectF>
#include <QString>
#include <QStringList>


struct TesseractLibrary;

// One Tesseract engine with its models loaded, kept for as long as the
// object lives so that later readings skip the load. Reads one picture at a
// time; calls from several threads wait for each other.
class TesseractEngine
{
public:
    // `languages` as Tesseract names them, joined by "+": "eng", "deu+eng".
    // `dataFolder` empty: Tesseract's own (TESSDATA_PREFIX, or where the
    // system's models lie).
    explicit TesseractEngine(QString languages, QString dataFolder = {});
    ~TesseractEngine();
    TesseractEngine(const TesseractEngine &) = delete;
    TesseractEngine &operator=(const TesseractEngine &) = delete;

    QString languages() const { return m_languages; }
    // Loads the models now if they are not loaded yet. False, with failure()
    // set, when they cannot be loaded.
    bool load();
    QString failure() const;

    struct Line {
        QString text;
        QRectF box; // in the prepared picture's pixels
    };
    // The lines of text in a prepared picture, top to bottom, each without
    // its line feed; empty lines are left out. Throws std::runtime_error
    // when the models cannot be loaded or the engine fails.
    QList<Line> readLines(const OcrPreparation::Prepared &prepared);

    // The folder the models are read from, and the languages installed there
    // ("eng", "osd", "deu"...); osd is no language and is left out.
    static QString defaultDataFolder();
    static QStringList installedLanguages(const QString &dataFolder);

private:
    bool loadLocked();

    QString m_languages;
    QString m_dataFolder;
    mutable QMutex m_mutex;
    const TesseractLibrary *m_library = nullptr;
    // The engine, once its models are loaded (a TessBaseAPI).
    void *m_api = nullptr;
    QString m_failure;
};
