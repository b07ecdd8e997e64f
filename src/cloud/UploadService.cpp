#include "cloud/UploadService.h"

#include "appbase/AppError.h"
#include "cloud/NetworkTransport.h"
#include "cloud/ObjectNames.h"
#include "cloud/ProviderChoice.h"
#include "cloud/TransportError.h"
#include "cloud/UploadFailed.h"
#include "output/ImageEncoder.h"
#include "settings/AppSettings.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutex>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

Q_LOGGING_CATEGORY(lcUploadService, "glimpso.UploadService", QtInfoMsg)

using glimpso::cloud::S3CompatibleProvider;
using glimpso::cloud::TransportError;
using glimpso::cloud::UploadFailed;

namespace {

constexpr qint64 progressIntervalMs = 100;

// Progress as the provider reports it, passed on to the main thread at most
// ten times a second, and always at the end.
class ProgressRelay
{
public:
    using Report = std::function<void(qint64, qint64)>;
    explicit ProgressRelay(Report report) : m_report(std::move(report)) { m_clock.start(); }

    void operator()(qint64 done, qint64 total)
    {
        const QMutexLocker lock(&m_mutex);
        if (done < total && m_clock.elapsed() < progressIntervalMs)
            return;
        m_clock.restart();
        m_report(done, total);
    }

private:
    Report m_report;
    QElapsedTimer m_clock;
    QMutex m_mutex;
};

// Every failure as the user's error: what the server or the protocol refused,
// and what the network reported, are both upload failures.
[[noreturn]] void rethrowAsAppError()
{
    try {
        throw;
    } catch (const AppError &) {
        throw;
    } catch (const UploadFailed &failure) {
        throw AppError::uploadFailed(failure.text());
    } catch (const TransportError &failure) {
        throw AppError::uploadFailed(failure.text());
    } catch (const std::exception &failure) {
        throw AppError::uploadFailed(QString::fromUtf8(failure.what()));
    }
}

} // namespace

UploadService::UploadService(Parts parts, QObject *parent)
    : QObject(parent)
    , m_parts(std::move(parts))
    , m_abandoned(m_parts.abandonedUploadsPath.isEmpty() ? AbandonedUploads::defaultPath()
                                                         : m_parts.abandonedUploadsPath)
{
    m_pool.setMaxThreadCount(maxConcurrentUploads);
    m_pool.setObjectName(QStringLiteral("glimpso uploads"));
}

UploadService::~UploadService()
{
    m_stop->store(true);
    m_pool.waitForDone();
}

QString UploadService::randomSlug(int length)
{
    return ObjectNames::randomSlug(length);
}

QByteArray UploadService::pngData(const QImage &image)
{
    if (image.isNull())
        return {};
    try {
        return ImageEncoder::png(image);
    } catch (const std::exception &) {
        return {};
    }
}

std::unique_ptr<glimpso::cloud::UploadProvider> UploadService::makeProvider(AppSettings &settings)
{
    const std::optional<Config> config = ProviderChoice::config(settings);
    if (!config)
        return nullptr;
    return std::make_unique<S3CompatibleProvider>(*config);
}

UploadService::Config UploadService::configOrThrow()
{
    AppSettings &settings = m_parts.settings;
    // With no provider chosen, the credentials are not even looked at.
    if (settings.cloudProvider() == CloudProvider::none)
        throw AppError::uploadNotConfigured();
    if (!settings.loadCloudCredentials())
        throw AppError::keychainDenied();
    const std::optional<Config> config = ProviderChoice::config(settings);
    if (!config)
        throw AppError::uploadNotConfigured();
    return *config;
}

QByteArray UploadService::pngFileData(const QString &path)
{
    static const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
    if (!path.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    return bytes.startsWith(signature) ? bytes : QByteArray();
}

QFuture<UploadService::UploadResult> UploadService::upload(const QImage &image, const QString &encodedPng)
{
    Job job;
    job.source = Job::Source::image;
    job.image = image;
    job.path = encodedPng;
    job.key = ObjectNames::randomSlug(ObjectNames::nameLength) + QStringLiteral(".png");
    job.contentType = QStringLiteral("image/png");
    job.label = QStringLiteral("Screenshot");
    return start(std::move(job));
}

QFuture<UploadService::UploadResult> UploadService::uploadFile(const QString &path, CaptureKind kind)
{
    const QFileInfo info(path);
    Job job;
    job.source = Job::Source::file;
    job.path = info.absoluteFilePath();
    job.key = ObjectNames::keyForFile(info.fileName());
    job.contentType = ObjectNames::contentType(info.fileName(), kind);
    job.label = info.fileName();
    job.size = info.size();
    job.logFormat = "uploaded file → %s";
    return start(std::move(job));
}

QFuture<UploadService::UploadResult> UploadService::testUpload()
{
    Job job;
    job.source = Job::Source::bytes;
    job.bytes = QByteArray(testBody);
    job.key = QStringLiteral("glimpso-test-") + ObjectNames::randomSlug(6) + QStringLiteral(".txt");
    job.contentType = QStringLiteral("text/plain");
    job.label = QStringLiteral("Test upload");
    job.size = job.bytes.size();
    job.copyLink = false;
    job.logFormat = "test upload → %s";
    return start(std::move(job));
}

UploadService::ProviderFactory UploadService::providerFactory() const
{
    if (m_parts.makeProvider)
        return m_parts.makeProvider;
    std::shared_ptr<const std::atomic<bool>> stop = m_stop;
    return [stop](const Config &config) {
        auto transport = std::make_shared<glimpso::cloud::NetworkTransport>(S3CompatibleProvider::kRequestTimeoutMs);
        transport->setStopFlag(stop);
        return std::make_unique<S3CompatibleProvider>(config, std::move(transport));
    };
}

QFuture<UploadService::UploadResult> UploadService::start(Job job)
{
    // On the main thread: the settings, and the credentials, which an old
    // keyring may have to be asked for.
    Config config;
    try {
        config = configOrThrow();
    } catch (const AppError &error) {
        qCCritical(lcUploadService, "upload not started: %s", qUtf8Printable(error.errorDescription()));
        return QtFuture::makeExceptionalFuture<UploadResult>(error);
    }

    const int id = ++m_nextID;
    ++m_running;
    Q_EMIT uploadStarted(id, job.label, job.size);

    QPointer<UploadService> self(this);
    auto progress = std::make_shared<ProgressRelay>([self, id](qint64 done, qint64 total) {
        QMetaObject::invokeMethod(
            self.data(),
            [self, id, done, total] {
                if (self)
                    Q_EMIT self->uploadProgressed(id, done, total);
            },
            Qt::QueuedConnection);
    });
    AbandonedUploads *abandoned = &m_abandoned;
    const ProviderFactory factory = providerFactory();

    QFuture<UploadResult> work = QtConcurrent::run(&m_pool, [job, config, factory, progress, abandoned] {
        try {
            std::unique_ptr<S3CompatibleProvider> provider = factory(config);
            provider->onProgress = [progress](qint64 done, qint64 total) { (*progress)(done, total); };
            provider->onAbandoned = [abandoned](const QUrl &objectURL, const QString &uploadId) {
                abandoned->add({objectURL, uploadId, QDateTime::currentDateTimeUtc()});
            };
            switch (job.source) {
            case Job::Source::image: {
                QByteArray png = pngFileData(job.path);
                if (png.isEmpty())
                    png = pngData(job.image);
                if (png.isEmpty())
                    throw AppError::uploadFailed(QStringLiteral("PNG encode failed"));
                return provider->upload(png, job.key, job.contentType);
            }
            case Job::Source::file:
                return provider->uploadFile(job.path, job.key, job.contentType);
            case Job::Source::bytes:
                break;
            }
            return provider->upload(job.bytes, job.key, job.contentType);
        } catch (...) {
            rethrowAsAppError();
        }
    });
    return work.then(this, [this, id, job, config](QFuture<UploadResult> done) {
        const bool succeeded = !done.isCanceled() && done.resultCount() > 0;
        if (succeeded)
            releaseAbandoned(config);
        return finish(id, job, done);
    });
}

UploadService::UploadResult UploadService::finish(int id, const Job &job, QFuture<UploadResult> done)
{
    --m_running;
    UploadResult result;
    try {
        result = done.result();
    } catch (const AppError &error) {
        qCCritical(lcUploadService, "upload of %s failed: %s", qUtf8Printable(job.label),
                   qUtf8Printable(error.errorDescription()));
        Q_EMIT uploadEnded(id, false);
        throw;
    }
    const QString link = result.url.toString(QUrl::FullyEncoded);
    qCInfo(lcUploadService, job.logFormat, qUtf8Printable(link));
    // Every upload leaves its link on the clipboard, never the picture.
    if (job.copyLink && m_parts.copyLink)
        m_parts.copyLink(link);
    Q_EMIT uploadEnded(id, true);
    return result;
}

void UploadService::releaseAbandoned(const Config &config)
{
    if (m_abandoned.entries().isEmpty())
        return;
    // Apart from the upload that just ended, so that its link comes at once.
    AbandonedUploads *abandoned = &m_abandoned;
    const ProviderFactory factory = providerFactory();
    m_pool.start([abandoned, factory, config] {
        try {
            std::unique_ptr<S3CompatibleProvider> provider = factory(config);
            abandoned->retry(*provider, QDateTime::currentDateTimeUtc());
        } catch (...) {
            // Tried again after the next upload.
        }
    });
}
