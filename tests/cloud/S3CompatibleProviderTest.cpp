#include "cloud/S3CompatibleProvider.h"

#include "FakeTransport.h"
#include "cloud/TransportError.h"
#include "cloud/UploadFailed.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

using namespace glimpso::cloud;
using glimpso::cloud::test::FakeTransport;

namespace {

constexpr qint64 kMiB = 1024 * 1024;

S3CompatibleProvider::Config pathStyleConfig()
{
    S3CompatibleProvider::Config config;
    config.endpoint = QUrl("http://127.0.0.1:9000");
    config.region = "us-east-1";
    config.bucket = "shots";
    config.pathStyle = true;
    config.accessKeyID = "test:tester";
    config.secretAccessKey = "testing";
    config.displayName = "S3";
    return config;
}

class S3CompatibleProviderTest : public ::testing::Test
{
protected:
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>();
    QTemporaryDir dir;

    S3CompatibleProvider provider(S3CompatibleProvider::Config config = pathStyleConfig())
    {
        return S3CompatibleProvider(std::move(config), transport);
    }

    // A sparse file: its size costs no disk and reads as zeros.
    QString fileOfSize(qint64 size)
    {
        const QString path = dir.filePath(QStringLiteral("file-%1.bin").arg(size));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_TRUE(file.resize(size));
        return path;
    }

    std::vector<qint64> partSizes() const
    {
        std::vector<qint64> sizes;
        for (const auto &sent : transport->sent)
            if (sent.request.url.query().startsWith(u"partNumber="))
                sizes.push_back(sent.bodySize);
        return sizes;
    }

    std::vector<QByteArray> methods() const
    {
        std::vector<QByteArray> out;
        for (const auto &sent : transport->sent)
            out.push_back(sent.request.method);
        return out;
    }

    QString uploadErrorOf(const std::function<void()> &action)
    {
        try {
            action();
        } catch (const UploadFailed &error) {
            return error.text();
        }
        ADD_FAILURE() << "no UploadFailed was thrown";
        return {};
    }

    static HttpResponse errorAnswer(int status, const QByteArray &body) { return { true, status, body, {} }; }
};

} // namespace

TEST_F(S3CompatibleProviderTest, JoinsAPrefixTrimmedOfSlashesAndBlanks)
{
    EXPECT_EQ(S3CompatibleProvider::join(" /my shots/ ", "a.png"), "my shots/a.png");
    EXPECT_EQ(S3CompatibleProvider::join("", "a.png"), "a.png");
}

TEST_F(S3CompatibleProviderTest, TreatsAPrefixOfOnlySlashesAndBlanksAsNoPrefix)
{
    EXPECT_EQ(S3CompatibleProvider::join(" // / ", "a.png"), "a.png");
}

TEST_F(S3CompatibleProviderTest, PutsTheBucketInThePathForPathStyle)
{
    auto config = pathStyleConfig();
    config.endpoint = QUrl("http://127.0.0.1:9000/ignored/path");
    const QUrl url = provider(config).objectURL("my folder/ü+x.png");
    EXPECT_EQ(url.toEncoded(), "http://127.0.0.1:9000/shots/my%20folder/%C3%BC%2Bx.png");
}

TEST_F(S3CompatibleProviderTest, PutsTheBucketInTheHostForVirtualHostStyle)
{
    auto config = pathStyleConfig();
    config.endpoint = QUrl("https://s3.example.com");
    config.pathStyle = false;
    EXPECT_EQ(provider(config).objectURL("a b.png").toEncoded(), "https://shots.s3.example.com/a%20b.png");
}

TEST_F(S3CompatibleProviderTest, RefusesAnEndpointWithoutHost)
{
    auto config = pathStyleConfig();
    config.endpoint = QUrl("not a url");
    EXPECT_EQ(
        uploadErrorOf([&] { provider(config).upload("x", "k", "text/plain"); }), "Invalid endpoint URL");
    EXPECT_TRUE(transport->sent.empty());
}

TEST_F(S3CompatibleProviderTest, BuildsTheLinkFromThePublicBase)
{
    auto config = pathStyleConfig();
    config.publicBaseURL = QUrl("https://cdn.example.com/files");
    config.keyPrefix = "shots/";
    const UploadResult result = provider(config).upload("x", "a b.png", "image/png");
    EXPECT_EQ(result.url.toEncoded(), "https://cdn.example.com/files/shots/a%20b.png");
    EXPECT_EQ(result.key, "shots/a b.png");
}

TEST_F(S3CompatibleProviderTest, FallsBackToTheObjectUrlWithoutPublicBase)
{
    const UploadResult result = provider().upload("x", "a.png", "image/png");
    EXPECT_EQ(result.url.toEncoded(), "http://127.0.0.1:9000/shots/a.png");
}

TEST_F(S3CompatibleProviderTest, SignsTheInMemoryBodyWithItsHashAndEveryHeader)
{
    const QByteArray data = "glimpso upload test\n";
    provider().upload(data, "glimpso-test-abc123.txt", "text/plain");

    ASSERT_EQ(transport->sent.size(), 1u);
    const auto &sent = transport->sent.front();
    EXPECT_EQ(sent.request.method, "PUT");
    EXPECT_EQ(sent.bodyStart, data);
    EXPECT_EQ(sent.request.header("Content-Type"), "text/plain");
    EXPECT_EQ(sent.request.header("Content-Length"), "20");
    EXPECT_EQ(sent.request.header("Cache-Control"), "public, max-age=31536000, immutable");
    EXPECT_EQ(sent.request.header("x-amz-content-sha256"), AWSSigV4::sha256Hex(data));
    EXPECT_EQ(sent.request.header("Host"), "127.0.0.1:9000");
    EXPECT_TRUE(sent.request.header("Authorization").contains("Credential=test:tester/")
        && sent.request.header("Authorization")
               .contains("SignedHeaders=cache-control;content-length;content-type;host;"
                         "x-amz-content-sha256;x-amz-date,"));
}

TEST_F(S3CompatibleProviderTest, SendsAFileOfExactlyTheThresholdAsOneStreamedPut)
{
    const QString path = fileOfSize(S3CompatibleProvider::kMultipartThreshold);
    provider().uploadFile(path, "big.bin", "application/octet-stream");

    ASSERT_EQ(transport->sent.size(), 1u);
    const auto &sent = transport->sent.front();
    EXPECT_EQ(sent.request.method, "PUT");
    EXPECT_EQ(sent.filePath, path);
    EXPECT_EQ(sent.request.header("x-amz-content-sha256"), "UNSIGNED-PAYLOAD");
    EXPECT_EQ(sent.request.header("Content-Length"), "104857600");
    EXPECT_EQ(sent.request.url.query(), "");
}

TEST_F(S3CompatibleProviderTest, SendsAFileOneByteOverTheThresholdAsMultipart)
{
    provider().uploadFile(
        fileOfSize(S3CompatibleProvider::kMultipartThreshold + 1), "big.bin", "application/octet-stream");
    EXPECT_EQ(partSizes(),
        (std::vector<qint64> {
            16 * kMiB, 16 * kMiB, 16 * kMiB, 16 * kMiB, 16 * kMiB, 16 * kMiB, 4 * kMiB + 1 }));
    EXPECT_EQ(transport->sent.front().request.method, "POST");
    EXPECT_EQ(transport->sent.back().request.method, "POST");
}

TEST_F(S3CompatibleProviderTest, SplitsSixteenMebibytesAndOneByteIntoTwoParts)
{
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    s3.uploadFile(fileOfSize(16 * kMiB + 1), "k", "application/octet-stream");
    EXPECT_EQ(partSizes(), (std::vector<qint64> { 16 * kMiB, 1 }));
}

TEST_F(S3CompatibleProviderTest, SendsNoEmptyPartForAnExactMultipleOfThePartSize)
{
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    s3.uploadFile(fileOfSize(32 * kMiB), "k", "application/octet-stream");
    EXPECT_EQ(partSizes(), (std::vector<qint64> { 16 * kMiB, 16 * kMiB }));
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST", "PUT", "PUT", "POST" }));
}

TEST_F(S3CompatibleProviderTest, CreatesWithTheBareUploadsQueryAndTheObjectHeaders)
{
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    s3.uploadFile(fileOfSize(10), "a b.gif", "image/gif");

    const auto &create = transport->sent.front().request;
    EXPECT_EQ(create.url.toEncoded(), "http://127.0.0.1:9000/shots/a%20b.gif?uploads");
    EXPECT_EQ(create.header("Content-Type"), "image/gif");
    EXPECT_EQ(create.header("Cache-Control"), "public, max-age=31536000, immutable");
    EXPECT_EQ(create.header("x-amz-content-sha256"), AWSSigV4::sha256Hex({}));
}

TEST_F(S3CompatibleProviderTest, SendsPartsUnsignedWithNumberThenEncodedUploadId)
{
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    s3.uploadFile(fileOfSize(10), "k", "application/octet-stream");

    const auto &part = transport->sent.at(1).request;
    EXPECT_EQ(part.method, "PUT");
    EXPECT_EQ(part.url.query(QUrl::FullyEncoded), "partNumber=1&uploadId=up%2Bid%2F1");
    EXPECT_EQ(part.header("Content-Length"), "10");
    EXPECT_EQ(part.header("x-amz-content-sha256"), "UNSIGNED-PAYLOAD");
}

TEST_F(S3CompatibleProviderTest, CompletesWithThePartsInOrderAndTheirQuotedETags)
{
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    s3.uploadFile(fileOfSize(40 * kMiB), "k", "application/octet-stream");

    const auto &complete = transport->sent.back();
    EXPECT_EQ(complete.request.url.query(QUrl::FullyEncoded), "uploadId=up%2Bid%2F1");
    EXPECT_EQ(complete.request.header("Content-Type"), "application/xml");
    const QByteArray body = "<CompleteMultipartUpload>"
                            "<Part><PartNumber>1</PartNumber><ETag>\"etag-1\"</ETag></Part>"
                            "<Part><PartNumber>2</PartNumber><ETag>\"etag-2\"</ETag></Part>"
                            "<Part><PartNumber>3</PartNumber><ETag>\"etag-3\"</ETag></Part>"
                            "</CompleteMultipartUpload>";
    EXPECT_EQ(complete.bodyStart, body.left(64));
    EXPECT_EQ(complete.bodySize, body.size());
    EXPECT_EQ(complete.request.header("x-amz-content-sha256"), AWSSigV4::sha256Hex(body));
}

TEST_F(S3CompatibleProviderTest, FailsACompleteAnsweredWithAnErrorCodeAndAborts)
{
    transport->answer = [](const FakeTransport::Sent &sent) {
        if (sent.request.method == "POST" && sent.request.url.query().startsWith(u"uploadId="))
            return HttpResponse { true, 200,
                "<Error><Code>InternalError</Code><Message>We encountered an "
                "internal error.</Message></Error>",
                {} };
        return FakeTransport::defaultAnswer(sent);
    };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_EQ(uploadErrorOf([&] { s3.uploadFile(fileOfSize(10), "k", "x/y"); }),
        "We encountered an internal error.");
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST", "PUT", "POST", "DELETE" }));
    EXPECT_EQ(transport->sent.back().request.url.query(QUrl::FullyEncoded), "uploadId=up%2Bid%2F1");
    EXPECT_EQ(transport->sent.back().request.header("x-amz-content-sha256"), AWSSigV4::sha256Hex({}));
}

TEST_F(S3CompatibleProviderTest, SaysTheUploadCouldNotBeCompletedWhenTheCodeHasNoMessage)
{
    transport->answer = [](const FakeTransport::Sent &sent) {
        if (sent.request.method == "POST" && sent.request.url.query().startsWith(u"uploadId="))
            return HttpResponse { true, 200, "<Error><Code>InternalError</Code></Error>", {} };
        return FakeTransport::defaultAnswer(sent);
    };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_EQ(uploadErrorOf([&] { s3.uploadFile(fileOfSize(10), "k", "x/y"); }),
        "The upload couldn't be completed");
}

TEST_F(S3CompatibleProviderTest, AbortsWhenAPartFailsAndReportsThePartsError)
{
    transport->answer = [](const FakeTransport::Sent &sent) {
        if (sent.request.url.query().startsWith(u"partNumber=2"))
            return errorAnswer(500, "<Error><Code>InternalError</Code><Message>boom</Message></Error>");
        if (sent.request.method == "DELETE")
            return errorAnswer(404, "<Error><Message>no such upload</Message></Error>");
        return FakeTransport::defaultAnswer(sent);
    };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_EQ(uploadErrorOf([&] { s3.uploadFile(fileOfSize(40 * kMiB), "k", "x/y"); }), "HTTP 500: boom");
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST", "PUT", "PUT", "DELETE" }));
}

TEST_F(S3CompatibleProviderTest, PassesATransportFailureThroughAfterAborting)
{
    transport->answer = [](const FakeTransport::Sent &sent) -> HttpResponse {
        if (sent.request.url.query().startsWith(u"partNumber="))
            throw TransportError("The request timed out.", true);
        if (sent.request.method == "DELETE")
            throw TransportError("Connection refused");
        return FakeTransport::defaultAnswer(sent);
    };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    try {
        s3.uploadFile(fileOfSize(10), "k", "x/y");
        ADD_FAILURE() << "no error";
    } catch (const TransportError &error) {
        EXPECT_TRUE(error.timedOut());
        EXPECT_EQ(error.text(), "The request timed out.");
    }
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST", "PUT", "DELETE" }));
}

TEST_F(S3CompatibleProviderTest, FailsAPartWithoutETagByNumber)
{
    transport->answer = [](const FakeTransport::Sent &sent) {
        if (sent.request.url.query().startsWith(u"partNumber=2"))
            return HttpResponse { true, 200, {}, {} };
        return FakeTransport::defaultAnswer(sent);
    };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_EQ(uploadErrorOf([&] { s3.uploadFile(fileOfSize(20 * kMiB), "k", "x/y"); }), "No ETag for part 2");
    EXPECT_EQ(methods().back(), "DELETE");
}

TEST_F(S3CompatibleProviderTest, FailsACreateWithoutUploadIdAndSendsNoAbort)
{
    transport->answer = [](const FakeTransport::Sent &) { return HttpResponse { true, 200, "<x/>", {} }; };
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_EQ(
        uploadErrorOf([&] { s3.uploadFile(fileOfSize(10), "k", "x/y"); }), "No upload id from the server");
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST" }));
}

TEST_F(S3CompatibleProviderTest, AbortsWhenTheFileCannotBeOpened)
{
    // A folder has a size but cannot be read as a file, whoever runs the test.
    const QString folder = dir.filePath(QStringLiteral("folder"));
    ASSERT_TRUE(QDir().mkpath(folder));
    auto s3 = provider();
    s3.setMultipartThreshold(0);
    EXPECT_THROW(s3.uploadFile(folder, "k", "x/y"), TransportError);
    EXPECT_EQ(methods(), (std::vector<QByteArray> { "POST", "DELETE" }));
}

TEST_F(S3CompatibleProviderTest, ShowsTheMessageOfAnErrorAnswer)
{
    transport->answer = [](const FakeTransport::Sent &) {
        return errorAnswer(403,
            "<?xml version=\"1.0\"?><Error><Code>AccessDenied</Code>"
            "<Message>Access Denied.</Message></Error>");
    };
    EXPECT_EQ(uploadErrorOf([&] { provider().upload("x", "k", "text/plain"); }), "HTTP 403: Access Denied.");
}

TEST_F(S3CompatibleProviderTest, ShowsNothingAfterTheStatusWhenTheExcerptCutsACharacter)
{
    // 399 ASCII bytes and then "é", whose second byte lies beyond the excerpt.
    const QByteArray body = QByteArray(399, 'a') + "\xc3\xa9" + "<Message>x</Message>";
    transport->answer = [&](const FakeTransport::Sent &) { return errorAnswer(403, body); };
    EXPECT_EQ(uploadErrorOf([&] { provider().upload("x", "k", "text/plain"); }), "HTTP 403: ");
}

TEST_F(S3CompatibleProviderTest, ShowsTheRawExcerptWhenTheMessageEndsBeyondIt)
{
    const QByteArray head = "<Error><Message>" + QByteArray(384, 'm');
    ASSERT_EQ(head.size(), 400);
    transport->answer
        = [&](const FakeTransport::Sent &) { return errorAnswer(400, head + "tail</Message></Error>"); };
    EXPECT_EQ(uploadErrorOf([&] { provider().upload("x", "k", "text/plain"); }),
        "HTTP 400: " + QString::fromLatin1(head));
}

TEST_F(S3CompatibleProviderTest, ShowsTheWholeExcerptOfAnAnswerWithoutMessage)
{
    transport->answer = [](const FakeTransport::Sent &) { return errorAnswer(502, "Bad Gateway"); };
    EXPECT_EQ(uploadErrorOf([&] { provider().upload("x", "k", "text/plain"); }), "HTTP 502: Bad Gateway");
}

TEST_F(S3CompatibleProviderTest, RefusesAnAnswerThatIsNotHttp)
{
    transport->answer = [](const FakeTransport::Sent &) { return HttpResponse { false, 0, {}, {} }; };
    EXPECT_EQ(uploadErrorOf([&] { provider().uploadFile(fileOfSize(3), "k", "x/y"); }), "No HTTP response");
}

TEST_F(S3CompatibleProviderTest, WritesUploadsBareAndOtherItemsEncodedInOrder)
{
    const QUrl base("http://h:1/b/k");
    EXPECT_EQ(
        S3CompatibleProvider::withQuery(base, { { "uploads", "" } }).toEncoded(), "http://h:1/b/k?uploads");
    EXPECT_EQ(S3CompatibleProvider::withQuery(base, { { "uploadId", "a+b/c=d" }, { "partNumber", "7" } })
                  .toEncoded(),
        "http://h:1/b/k?uploadId=a%2Bb%2Fc%3Dd&partNumber=7");
}

TEST_F(S3CompatibleProviderTest, ReadsXmlValuesAsPlainText)
{
    EXPECT_EQ(S3CompatibleProvider::xmlValue("UploadId", "<a><UploadId>x&amp;y</UploadId></a>"),
        QString("x&amp;y"));
    EXPECT_EQ(S3CompatibleProvider::xmlValue("UploadId", "<UploadId>open"), std::nullopt);
    EXPECT_EQ(S3CompatibleProvider::xmlValue("UploadId", "<UploadId a=\"1\">x</UploadId>"), std::nullopt);
    EXPECT_EQ(S3CompatibleProvider::xmlValue("Code", "<Code>\xff</Code>"), std::nullopt);
}

TEST_F(S3CompatibleProviderTest, TakesTheDisplayNameFromTheConfig)
{
    auto config = pathStyleConfig();
    config.displayName = "Cloudflare R2";
    EXPECT_EQ(provider(config).displayName(), "Cloudflare R2");
}

TEST_F(S3CompatibleProviderTest, SignsEachRequestWithTheClocksDate)
{
    auto s3 = provider();
    s3.setClock([] { return QDateTime(QDate(2026, 11, 23), QTime(1, 2, 3), Qt::UTC); });
    s3.upload("x", "k", "text/plain");
    const auto &request = transport->sent.front().request;
    EXPECT_EQ(request.header("x-amz-date"), "20261123T010203Z");
    EXPECT_TRUE(request.header("Authorization").contains("/20261123/us-east-1/s3/aws4_request,"));
}
