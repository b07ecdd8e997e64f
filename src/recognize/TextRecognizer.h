#pragma once

#include "recognize/OcrPreparation.h"

#include <QFuture>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <memory>
#include <optional>

class TesseractEngine;

// Reads the text and the first code out of a picture, on the device: the
// text with Tesseract, prepared as screen text wants (OcrPreparation), and
// the codes with ZXing, both at once. The engine and its models are loaded at
// the first reading (or by warmUp()) and kept until the object goes.
class TextRecognizer
{
public:
    struct Result {
        // The lines found, joined by line feeds; absent rather than empty.
        std::optional<QString> text;
        // The payload of the first code with a text payload.
        std::optional<QString> code;
        bool operator==(const Result &) const = default;
    };

    // `preferredLanguages`: the user's, in order (QLocale::uiLanguages());
    // the models are chosen among those installed in `dataFolder` (empty:
    // Tesseract's own folder).
    explicit TextRecognizer(const QStringList &preferredLanguages, const QString &dataFolder = {});
    ~TextRecognizer();
    TextRecognizer(const TextRecognizer &) = delete;
    TextRecognizer &operator=(const TextRecognizer &) = delete;

    // Off the calling thread. Fails (std::runtime_error) only when the
    // engine cannot run; a picture with nothing in it gives an empty Result.
    QFuture<Result> recognize(const QImage &image);
    // The same on the calling thread, for a command-line reading.
    Result recognizeNow(const QImage &image);
    // Loads the models on a worker now, so that a reading soon after finds
    // them ready: called when the user starts to drag an area for its text.
    void warmUp();

    // The Tesseract languages chosen, "deu+eng".
    QString languages() const;

    // Lines joined by line feeds, or absent when there is none.
    static std::optional<QString> joinLines(const QStringList &lines);
    // A line as the engine read it, in the characters screens show: the
    // engine's models prefer typographic quotes where screens (code,
    // terminals, addresses) almost always have straight ones, and it reads
    // "::" as ": :".
    static QString screenCharacters(QString line);

private:
    std::unique_ptr<TesseractEngine> m_engine;
    OcrPreparation::Options m_preparation;
    // Our own threads: a reading waits for its code reader, which must not
    // queue behind other work of the application's pool.
    QThreadPool m_pool;
};
