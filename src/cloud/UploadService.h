#pragma once

#include "appbase/CaptureKind.h"
#include "cloud/AbandonedUploads.h"
#include "cloud/S3CompatibleProvider.h"
#include "cloud/UploadProvider.h"

#include <QByteArray>
#include <QFuture>
#include <QImage>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class AppSettings;

// The front of cloud upload: everyone who wants a link calls it, from the
// main thread. It picks the provider from the settings, names the object at
// random, runs the upload on a thread of its own (the provider waits for each
// answer) and leaves the link, never the picture, on the clipboard. Uploads
// don't wait for one another: several may run at once. Failures finish the
// future with an AppError: uploadNotConfigured, keychainDenied, or
// uploadFailed with the server's or the network's text.
class UploadService : public QObject
{
    Q_OBJECT

public:
    using Config = glimpso::cloud::S3CompatibleProvider::Config;
    using UploadResult = glimpso::cloud::UploadResult;
    // Makes the provider of one upload, on the thread that runs it.
    using ProviderFactory = std::function<std::unique_ptr<glimpso::cloud::S3CompatibleProvider>(const Config &)>;

    struct Parts {
        AppSettings &settings;
        // Replaces what the clipboard holds with the link's text. Main thread.
        std::function<void(const QString &link)> copyLink;
        // Empty: a provider that goes over the network.
        ProviderFactory makeProvider;
        // Empty: the file in glimpso's data folder.
        QString abandonedUploadsPath;
    };

    // Uploads running at once; more wait for a free thread.
    static constexpr int maxConcurrentUploads = 8;
    // The settings window's test: what it sends, and under which name.
    static constexpr char testBody[] = "glimpso upload test\n";

    explicit UploadService(Parts parts, QObject *parent = nullptr);
    // Uploads still running are stopped, and waited for.
    ~UploadService() override;

    // A finished capture, as PNG under "{random}.png". `encodedPng`, when
    // given, is a file already holding the picture's PNG (the capture just
    // saved): its bytes go as they are, and the picture is encoded only when
    // the file can't be read or is no PNG.
    QFuture<UploadResult> upload(const QImage &image, const QString &encodedPng = {});
    // A file: a recording, a history entry, the command line's. The local
    // file is left as it is; the object's name has no relation to it.
    QFuture<UploadResult> uploadFile(const QString &path, CaptureKind kind);
    // The settings window's "Test upload": a small text object
    // "glimpso-test-{random}.txt" that stays in the bucket. The clipboard is
    // left alone.
    QFuture<UploadResult> testUpload();

    // The provider the settings describe, or none while they are incomplete.
    // Loads the credentials on first need. Main thread.
    static std::unique_ptr<glimpso::cloud::UploadProvider> makeProvider(AppSettings &settings);
    static QString randomSlug(int length);
    // PNG bytes, empty when the picture can't be encoded.
    static QByteArray pngData(const QImage &image);
    // The bytes of a PNG file, empty when it can't be read or is no PNG.
    static QByteArray pngFileData(const QString &path);

    int runningUploads() const { return m_running; }

Q_SIGNALS:
    // An upload began: its label (the file's name, or "Screenshot") and its
    // size (0 until known).
    void uploadStarted(int id, const QString &label, qint64 totalBytes);
    // Bytes stored so far, at most ten times a second.
    void uploadProgressed(int id, qint64 sentBytes, qint64 totalBytes);
    // Sent before the caller's future finishes.
    void uploadEnded(int id, bool succeeded);

private:
    struct Job {
        enum class Source { image, file, bytes };
        Source source = Source::bytes;
        QImage image;
        QString path;
        QByteArray bytes;
        QString key;
        QString contentType;
        QString label;
        qint64 size = 0;
        bool copyLink = true;
        const char *logFormat = "uploaded → %s";
    };

    // The provider's configuration, or the error that stops the upload.
    Config configOrThrow();
    QFuture<UploadResult> start(Job job);
    UploadResult finish(int id, const Job &job, QFuture<UploadResult> done);
    void releaseAbandoned(const Config &config);
    ProviderFactory providerFactory() const;

    Parts m_parts;
    AbandonedUploads m_abandoned;
    std::shared_ptr<std::atomic<bool>> m_stop = std::make_shared<std::atomic<bool>>(false);
    QThreadPool m_pool;
    int m_nextID = 0;
    int m_running = 0;
};
