// glimpso-s3put: uploads one file through S3CompatibleProvider and prints the
// public link. On failure it prints the upload's error text on stderr and
// exits 1. Tests and the upload benchmark drive it.

#include "cloud/NetworkTransport.h"
#include "cloud/S3CompatibleProvider.h"
#include "cloud/TransportError.h"
#include "cloud/UploadFailed.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMimeDatabase>
#include <cstdio>
#include <memory>

using namespace glimpso::cloud;

namespace {

int usage(const QString &text)
{
    std::fprintf(stderr, "glimpso-s3put: %s\n", qUtf8Printable(text));
    return 2;
}

int failed(const QString &text)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Uploads a file to an S3-compatible bucket.");
    parser.addHelpOption();
    parser.addOptions({
        { "endpoint", "Scheme and host of the service, e.g. http://127.0.0.1:8080.", "URL" },
        { "region", "Signing region.", "REGION" },
        { "bucket", "Bucket name.", "BUCKET" },
        { "access-key", "Access key id.", "KEY" },
        { "secret-key", "Secret access key.", "SECRET" },
        { "path-style", "Address the bucket in the path rather than in the host name." },
        { "public-base-url", "Base of the printed link instead of the object URL.", "URL" },
        { "key-prefix", "Folder inside the bucket.", "PREFIX" },
        { "multipart-threshold", "Files larger than this go multipart (default 104857600).", "BYTES" },
        { "request-timeout", "Seconds a request may make no progress (default 60).", "SECONDS" },
        { "content-type", "Content type (default: guessed from the file).", "TYPE" },
        { "file", "The file to upload.", "FILE" },
        { "key", "Object key (default: the file's name).", "KEY" },
        { "clock-offset", "Sign as if the clock were this many seconds ahead (for tests).", "SECONDS" },
        { "in-memory", "Read the file into memory and upload the bytes, signed with their hash." },
        { "verbose", "Log each request on stderr." },
    });
    parser.process(app);
    if (!parser.isSet("verbose"))
        QLoggingCategory::setFilterRules(QStringLiteral("glimpso.*.info=false"));
    for (const char *required : { "endpoint", "region", "bucket", "access-key", "secret-key", "file" })
        if (!parser.isSet(required))
            return usage(QStringLiteral("--%1 is required").arg(required));

    S3CompatibleProvider::Config config;
    config.endpoint = QUrl(parser.value("endpoint"));
    config.region = parser.value("region");
    config.bucket = parser.value("bucket");
    config.keyPrefix = parser.value("key-prefix");
    config.publicBaseURL = QUrl(parser.value("public-base-url"));
    config.pathStyle = parser.isSet("path-style");
    config.accessKeyID = parser.value("access-key");
    config.secretAccessKey = parser.value("secret-key");
    config.displayName = QStringLiteral("S3");

    int timeoutMs = S3CompatibleProvider::kRequestTimeoutMs;
    if (parser.isSet("request-timeout")) {
        bool ok = false;
        timeoutMs = int(parser.value("request-timeout").toDouble(&ok) * 1000);
        if (!ok || timeoutMs <= 0)
            return usage(QStringLiteral("--request-timeout must be a positive number"));
    }
    S3CompatibleProvider provider(config, std::make_shared<NetworkTransport>(timeoutMs));
    if (parser.isSet("multipart-threshold")) {
        bool ok = false;
        const qint64 threshold = parser.value("multipart-threshold").toLongLong(&ok);
        if (!ok || threshold < 0)
            return usage(QStringLiteral("--multipart-threshold must be a byte count"));
        provider.setMultipartThreshold(threshold);
    }

    if (parser.isSet("clock-offset")) {
        bool ok = false;
        const qint64 offset = parser.value("clock-offset").toLongLong(&ok);
        if (!ok)
            return usage(QStringLiteral("--clock-offset must be a number of seconds"));
        provider.setClock([offset] { return QDateTime::currentDateTimeUtc().addSecs(offset); });
    }

    const QString file = parser.value("file");
    const QString key = parser.isSet("key") ? parser.value("key") : QFileInfo(file).fileName();
    const QString contentType = parser.isSet("content-type") ? parser.value("content-type")
                                                             : QMimeDatabase().mimeTypeForFile(file).name();
    try {
        UploadResult result;
        if (parser.isSet("in-memory")) {
            QFile in(file);
            if (!in.open(QIODevice::ReadOnly))
                return failed(in.errorString());
            result = provider.upload(in.readAll(), key, contentType);
        } else {
            result = provider.uploadFile(file, key, contentType);
        }
        std::printf("%s\n", result.url.toEncoded().constData());
        return 0;
    } catch (const UploadFailed &error) {
        return failed(error.text());
    } catch (const TransportError &error) {
        return failed(error.text());
    }
}
