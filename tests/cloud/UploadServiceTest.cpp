#include "cloud/UploadService.h"

#include "appbase/AppError.h"
#include "cloud/TransportError.h"

#include "CloudFakes.h"
#include "EventLoopWait.h"
#include "FakeTransport.h"

#include <QImage>
#include <QMutex>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

using glimpso::cloud::HttpResponse;
using glimpso::cloud::S3CompatibleProvider;
using glimpso::cloud::TransportError;
using glimpso::cloud::test::FakeTransport;

namespace {

// A transport many upload threads may share: each request is recorded under
// a lock before it is answered.
struct SharedTransport : FakeTransport {
    QMutex mutex;
    glimpso::cloud::HttpResponse send(const glimpso::cloud::HttpRequest &request, const QByteArray &body) override
    {
        std::function<HttpResponse(const Sent &)> reply;
        Sent copy;
        {
            const QMutexLocker lock(&mutex);
            sent.push_back({request, body.size(), body.left(64), {}});
            copy = sent.back();
            reply = answer;
        }
        if (onUploadProgress)
            onUploadProgress(body.size(), body.size());
        return reply(copy);
    }
    glimpso::cloud::HttpResponse sendFile(const glimpso::cloud::HttpRequest &request, const QString &path) override
    {
        std::function<HttpResponse(const Sent &)> reply;
        Sent copy;
        {
            const QMutexLocker lock(&mutex);
            sent.push_back({request, QFileInfo(path).size(), {}, path});
            copy = sent.back();
            reply = answer;
        }
        if (onUploadProgress)
            onUploadProgress(copy.bodySize, copy.bodySize);
        return reply(copy);
    }
};

struct UploadServiceTest : ::testing::Test, CloudSettings {
    std::shared_ptr<SharedTransport> transport = std::make_shared<SharedTransport>();
    QStringList copied;
    qint64 multipartThreshold = S3CompatibleProvider::kMultipartThreshold;
    std::unique_ptr<UploadService> service;

    void SetUp() override
    {
        UploadService::Parts parts{settings, {}, {}, home.filePath(QStringLiteral("glimpso/abandoned-uploads.json"))};
        parts.copyLink = [this](const QString &link) { copied << link; };
        parts.makeProvider = [this](const UploadService::Config &config) {
            auto provider = std::make_unique<S3CompatibleProvider>(config, transport);
            provider->setMultipartThreshold(multipartThreshold);
            return provider;
        };
        service = std::make_unique<UploadService>(std::move(parts));
    }

    template <typename T>
    static bool finish(const QFuture<T> &future)
    {
        return processEventsUntil([&future] { return future.isFinished(); }, 20000);
    }

    static AppError failureOf(QFuture<UploadService::UploadResult> future)
    {
        EXPECT_TRUE(finish(future));
        try {
            future.result();
        } catch (const AppError &error) {
            return error;
        }
        ADD_FAILURE() << "the upload did not fail";
        return AppError::captureFailed(QStringLiteral("none"));
    }

    static QImage picture()
    {
        QImage image(40, 30, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(200, 30, 40));
        return image;
    }

    QString tempFile(const QString &name, qint64 size)
    {
        const QString path = home.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(size, 'v'));
        return path;
    }
};

TEST_F(UploadServiceTest, APictureGoesUpAsPngUnderARandomNameAndItsLinkIsCopied)
{
    const auto future = service->upload(picture());
    ASSERT_TRUE(finish(future));
    const UploadService::UploadResult result = future.result();
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[A-Za-z0-9]{10}\\.png$")).match(result.key).hasMatch())
        << qPrintable(result.key);
    EXPECT_EQ(result.url.toString(), QStringLiteral("http://127.0.0.1:9000/shots/") + result.key);
    ASSERT_EQ(transport->sent.size(), 1u);
    const auto &put = transport->sent.front();
    EXPECT_EQ(put.request.method, "PUT");
    EXPECT_EQ(put.request.header("Content-Type"), "image/png");
    EXPECT_TRUE(put.bodyStart.startsWith("\x89PNG\r\n\x1a\n"));
    EXPECT_EQ(copied, QStringList{result.url.toString()});
}

TEST_F(UploadServiceTest, ThePngOfTheSavedCaptureGoesAsItIsInsteadOfASecondEncoding)
{
    const QString saved = home.filePath(QStringLiteral("glimpso-2025-03-01-120000.png"));
    QFile file(saved);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray bytes = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray("as saved");
    file.write(bytes);
    file.close();
    const auto future = service->upload(picture(), saved);
    ASSERT_TRUE(finish(future));
    ASSERT_EQ(transport->sent.size(), 1u);
    EXPECT_EQ(transport->sent.front().bodyStart, bytes);
    EXPECT_TRUE(future.result().key.endsWith(QStringLiteral(".png")));
}

TEST_F(UploadServiceTest, ASavedFileThatIsNoPngIsNotSent)
{
    const QString jpeg = tempFile(QStringLiteral("glimpso-2025-03-01-120000.jpeg"), 50);
    const QString fakePng = tempFile(QStringLiteral("glimpso-2025-03-01-120001.png"), 50);
    for (const QString &path : {jpeg, fakePng, home.filePath(QStringLiteral("gone.png"))}) {
        const auto future = service->upload(picture(), path);
        ASSERT_TRUE(finish(future));
    }
    ASSERT_EQ(transport->sent.size(), 3u);
    for (const auto &sent : transport->sent)
        EXPECT_TRUE(sent.bodyStart.startsWith("\x89PNG\r\n\x1a\n")) << sent.bodyStart.toHex().constData();
}

TEST_F(UploadServiceTest, APublicBaseMakesTheLink)
{
    settings.cloudPublicBaseURL.set(QStringLiteral("https://cdn.example.com/s"));
    settings.cloudKeyPrefix.set(QStringLiteral("shots"));
    const auto future = service->upload(picture());
    ASSERT_TRUE(finish(future));
    EXPECT_TRUE(future.result().key.startsWith(QStringLiteral("shots/")));
    EXPECT_EQ(copied, QStringList{QStringLiteral("https://cdn.example.com/s/") + future.result().key});
}

TEST_F(UploadServiceTest, AFileGoesUpWithItsExtensionAndTheTypeOfItsKind)
{
    const QString path = tempFile(QStringLiteral("clip.mov"), 1000);
    const auto future = service->uploadFile(path, CaptureKind::video);
    ASSERT_TRUE(finish(future));
    EXPECT_TRUE(future.result().key.endsWith(QStringLiteral(".mov")));
    ASSERT_EQ(transport->sent.size(), 1u);
    EXPECT_EQ(transport->sent.front().filePath, path);
    EXPECT_EQ(transport->sent.front().request.header("Content-Type"), "video/mp4");
    EXPECT_EQ(copied.size(), 1);
    EXPECT_TRUE(QFileInfo::exists(path));
}

TEST_F(UploadServiceTest, WithoutAProviderNoCredentialIsTouched)
{
    settings.cloudProvider.set(CloudProvider::none);
    const AppError error = failureOf(service->upload(picture()));
    EXPECT_EQ(error.kind(), AppError::Case::uploadNotConfigured);
    EXPECT_FALSE(settings.cloudCredentialsLoaded());
    EXPECT_EQ(keychain.calls(), 0);
    EXPECT_TRUE(transport->sent.empty());
    EXPECT_TRUE(copied.isEmpty());
}

TEST_F(UploadServiceTest, IncompleteSettingsAreNotConfigured)
{
    settings.cloudEndpoint.set(QStringLiteral("s3.example.com"));
    EXPECT_EQ(failureOf(service->upload(picture())).kind(), AppError::Case::uploadNotConfigured);
    settings.cloudEndpoint.set(QStringLiteral("http://127.0.0.1:9000"));
    file.remove();
    settings.reloadCloudCredentials();
    EXPECT_EQ(failureOf(service->uploadFile(tempFile(QStringLiteral("a.png"), 5), CaptureKind::image)).kind(),
              AppError::Case::uploadNotConfigured);
    EXPECT_TRUE(transport->sent.empty());
}

TEST_F(UploadServiceTest, ALockedKeyringIsKeychainDenied)
{
    file.remove();
    keychain.items[CredentialKeychain::accessKeyAccount] = CredentialKeychain::ReadResult::found(QStringLiteral("k"));
    keychain.items[CredentialKeychain::secretAccount] = CredentialKeychain::ReadResult::denied();
    const AppError error = failureOf(service->upload(picture()));
    EXPECT_EQ(error.kind(), AppError::Case::keychainDenied);
    EXPECT_TRUE(error.errorDescription().startsWith(QStringLiteral("Keyring access was denied")));
    EXPECT_TRUE(settings.cloudCredentialsDenied());
    EXPECT_TRUE(transport->sent.empty());
}

TEST_F(UploadServiceTest, TheServersRefusalIsAnUploadFailureAndNothingIsCopied)
{
    transport->answer = [](const FakeTransport::Sent &) {
        return HttpResponse{true, 403, "<Error><Code>AccessDenied</Code><Message>Access Denied</Message></Error>", {}};
    };
    const AppError error = failureOf(service->upload(picture()));
    EXPECT_EQ(error.kind(), AppError::Case::uploadFailed);
    EXPECT_EQ(error.errorDescription(), QStringLiteral("Upload failed: HTTP 403: Access Denied"));
    EXPECT_TRUE(copied.isEmpty());
}

TEST_F(UploadServiceTest, ANetworkFailureIsAnUploadFailureWithItsText)
{
    transport->answer = [](const FakeTransport::Sent &) -> HttpResponse {
        throw TransportError(QStringLiteral("Connection refused"));
    };
    const AppError error = failureOf(service->uploadFile(tempFile(QStringLiteral("a.gif"), 5), CaptureKind::gif));
    EXPECT_EQ(error.errorDescription(), QStringLiteral("Upload failed: Connection refused"));
}

TEST_F(UploadServiceTest, TwoUploadsRunAtOnce)
{
    std::atomic<int> inFlight{0};
    std::atomic<int> mostAtOnce{0};
    transport->answer = [&](const FakeTransport::Sent &sent) {
        const int now = ++inFlight;
        mostAtOnce = std::max(mostAtOnce.load(), now);
        // Each answer waits until the other upload has sent its request too.
        for (int i = 0; i < 500 && mostAtOnce < 2; ++i)
            QThread::msleep(10);
        --inFlight;
        return FakeTransport::defaultAnswer(sent);
    };
    const auto first = service->upload(picture());
    const auto second = service->uploadFile(tempFile(QStringLiteral("b.png"), 10), CaptureKind::image);
    ASSERT_TRUE(finish(first));
    ASSERT_TRUE(finish(second));
    EXPECT_EQ(mostAtOnce.load(), 2);
    EXPECT_EQ(copied.size(), 2);
}

TEST_F(UploadServiceTest, ProgressIsToldAndTheEndComesBeforeTheResult)
{
    QSignalSpy started(service.get(), &UploadService::uploadStarted);
    QSignalSpy progressed(service.get(), &UploadService::uploadProgressed);
    QFuture<UploadService::UploadResult> future;
    bool endedBeforeResult = false;
    QObject::connect(service.get(), &UploadService::uploadEnded, [&](int, bool succeeded) {
        endedBeforeResult = succeeded && !future.isFinished();
    });
    future = service->uploadFile(tempFile(QStringLiteral("c.png"), 777), CaptureKind::image);
    ASSERT_TRUE(finish(future));
    ASSERT_EQ(started.size(), 1);
    EXPECT_EQ(started.first().at(1).toString(), QStringLiteral("c.png"));
    EXPECT_EQ(started.first().at(2).toLongLong(), 777);
    ASSERT_TRUE(processEventsUntil([&] { return !progressed.isEmpty(); }));
    EXPECT_EQ(progressed.last().at(1).toLongLong(), 777);
    EXPECT_TRUE(endedBeforeResult);
    EXPECT_EQ(service->runningUploads(), 0);
}

TEST_F(UploadServiceTest, TheTestUploadSendsASmallTextAndLeavesTheClipboardAlone)
{
    const auto future = service->testUpload();
    ASSERT_TRUE(finish(future));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^glimpso-test-[A-Za-z0-9]{6}\\.txt$"))
                    .match(future.result().key)
                    .hasMatch());
    ASSERT_EQ(transport->sent.size(), 1u);
    EXPECT_EQ(transport->sent.front().bodyStart, QByteArray("glimpso upload test\n"));
    EXPECT_EQ(transport->sent.front().request.header("Content-Type"), "text/plain");
    EXPECT_TRUE(copied.isEmpty());
}

TEST_F(UploadServiceTest, AMultipartUploadWhoseAbortFailedIsReleasedAfterTheNextUpload)
{
    multipartThreshold = 10;
    std::atomic<bool> serverDown{true};
    transport->answer = [&](const FakeTransport::Sent &sent) -> HttpResponse {
        const bool part = sent.request.method == "PUT" && sent.request.url.query().startsWith(u"partNumber=");
        if (serverDown && (part || sent.request.method == "DELETE"))
            throw TransportError(QStringLiteral("Connection refused"));
        return FakeTransport::defaultAnswer(sent);
    };
    const AppError error = failureOf(service->uploadFile(tempFile(QStringLiteral("big.mp4"), 100), CaptureKind::video));
    EXPECT_EQ(error.errorDescription(), QStringLiteral("Upload failed: Connection refused"));
    AbandonedUploads abandoned(home.filePath(QStringLiteral("glimpso/abandoned-uploads.json")));
    ASSERT_EQ(abandoned.entries().size(), 1);
    EXPECT_EQ(abandoned.entries().first().uploadId, QStringLiteral("up+id/1"));

    serverDown = false;
    multipartThreshold = S3CompatibleProvider::kMultipartThreshold;
    const auto next = service->upload(picture());
    ASSERT_TRUE(finish(next));
    ASSERT_TRUE(processEventsUntil([&] { return abandoned.entries().isEmpty(); }));
    const QMutexLocker lock(&transport->mutex);
    const auto &last = transport->sent.back();
    EXPECT_EQ(last.request.method, "DELETE");
    EXPECT_EQ(last.request.url.query(QUrl::FullyEncoded), QStringLiteral("uploadId=up%2Bid%2F1"));
}

} // namespace
