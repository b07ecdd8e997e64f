#include "cloud/AbandonedUploads.h"

#include "FakeTransport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using glimpso::cloud::HttpResponse;
using glimpso::cloud::S3CompatibleProvider;
using glimpso::cloud::test::FakeTransport;

namespace {

struct AbandonedUploadsTest : ::testing::Test {
    QTemporaryDir home;
    AbandonedUploads abandoned{home.filePath(QStringLiteral("glimpso/abandoned-uploads.json"))};
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>();
    QDateTime now = QDateTime(QDate(2025, 3, 1), QTime(12, 0), Qt::UTC);

    S3CompatibleProvider provider(const QString &bucket)
    {
        S3CompatibleProvider::Config config;
        config.endpoint = QUrl(QStringLiteral("http://127.0.0.1:9000"));
        config.region = QStringLiteral("us-east-1");
        config.bucket = bucket;
        config.accessKeyID = QStringLiteral("k");
        config.secretAccessKey = QStringLiteral("s");
        return S3CompatibleProvider(config, transport);
    }
    static AbandonedUploads::Entry entry(const QString &url, const QString &id, const QDateTime &since)
    {
        return {QUrl(url), id, since};
    }
};

TEST_F(AbandonedUploadsTest, EntriesComeBackAsTheyWereKept)
{
    const auto first = entry(QStringLiteral("http://127.0.0.1:9000/shots/a%20b.mp4"), QStringLiteral("id/1"), now);
    abandoned.add(first);
    abandoned.add(first);
    EXPECT_EQ(abandoned.entries(), QList<AbandonedUploads::Entry>{first});
    EXPECT_EQ(AbandonedUploads::decode(AbandonedUploads::encode({first})), QList<AbandonedUploads::Entry>{first});
}

TEST_F(AbandonedUploadsTest, WhatDoesNotDecodeIsSkipped)
{
    EXPECT_TRUE(AbandonedUploads::decode("not json").isEmpty());
    EXPECT_TRUE(AbandonedUploads::decode(R"({"url":"x"})").isEmpty());
    const auto kept = AbandonedUploads::decode(
        R"([{"url":"http://h/b/k","uploadId":"1","since":"2025-03-01T12:00:00Z"},
            {"url":"no host","uploadId":"2","since":"2025-03-01T12:00:00Z"},
            {"url":"http://h/b/k","uploadId":"","since":"2025-03-01T12:00:00Z"},
            {"url":"http://h/b/k","uploadId":"3","since":"yesterday"}, 7])");
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept.first().uploadId, QStringLiteral("1"));
}

TEST_F(AbandonedUploadsTest, ARetryAbortsThoseOfTheSameBucketOnly)
{
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9000/shots/a.mp4"), QStringLiteral("1"), now));
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9000/other/b.mp4"), QStringLiteral("2"), now));
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9001/shots/c.mp4"), QStringLiteral("3"), now));
    S3CompatibleProvider shots = provider(QStringLiteral("shots"));
    EXPECT_EQ(abandoned.retry(shots, now), 1);
    ASSERT_EQ(transport->sent.size(), 1u);
    EXPECT_EQ(transport->sent.front().request.method, "DELETE");
    EXPECT_EQ(transport->sent.front().request.url.toString(), QStringLiteral("http://127.0.0.1:9000/shots/a.mp4?uploadId=1"));
    EXPECT_EQ(abandoned.entries().size(), 2);
}

TEST_F(AbandonedUploadsTest, AnUploadTheServerNoLongerKnowsIsForgotten)
{
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9000/shots/a.mp4"), QStringLiteral("1"), now));
    transport->answer = [](const FakeTransport::Sent &) { return HttpResponse{true, 404, "NoSuchUpload", {}}; };
    S3CompatibleProvider shots = provider(QStringLiteral("shots"));
    EXPECT_EQ(abandoned.retry(shots, now), 1);
    EXPECT_TRUE(abandoned.entries().isEmpty());
}

TEST_F(AbandonedUploadsTest, AFailedRetryKeepsTheEntry)
{
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9000/shots/a.mp4"), QStringLiteral("1"), now));
    transport->answer = [](const FakeTransport::Sent &) { return HttpResponse{true, 503, "busy", {}}; };
    S3CompatibleProvider shots = provider(QStringLiteral("shots"));
    EXPECT_EQ(abandoned.retry(shots, now), 0);
    EXPECT_EQ(abandoned.entries().size(), 1);
}

TEST_F(AbandonedUploadsTest, OneAMonthOldIsGivenUpWithoutARequest)
{
    abandoned.add(entry(QStringLiteral("http://127.0.0.1:9000/shots/a.mp4"), QStringLiteral("1"), now.addDays(-31)));
    S3CompatibleProvider shots = provider(QStringLiteral("shots"));
    EXPECT_EQ(abandoned.retry(shots, now), 0);
    EXPECT_TRUE(transport->sent.empty());
    EXPECT_TRUE(abandoned.entries().isEmpty());
}

} // namespace
