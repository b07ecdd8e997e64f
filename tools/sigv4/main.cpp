// glimpso-sigv4: signs an HTTP request read from stdin in the signing test
// suite's ".req" form, and prints the canonical request, the string to sign
// and the Authorization header, separated by a blank line each.

#include "RequestFile.h"
#include "cloud/AWSSigV4.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <cstdio>

using glimpso::cloud::AWSSigV4;
using glimpso::tools::RequestFile;

namespace {

int fail(const QString &text)
{
    std::fprintf(stderr, "glimpso-sigv4: %s\n", qUtf8Printable(text));
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Signs an HTTP request read from stdin with AWS Signature Version 4.\n"
        "By default only the headers the request carries are signed (plus Host and "
        "X-Amz-Date when missing), as in the signing test suite. With --s3 the "
        "request is signed as the S3 provider signs: x-amz-content-sha256 is added.");
    parser.addHelpOption();
    parser.addOptions({
        { "access-key", "Access key id.", "KEY" },
        { "secret-key", "Secret access key.", "SECRET" },
        { "region", "Region.", "REGION" },
        { "service", "Service.", "SERVICE" },
        { "date", "Signing date, yyyyMMddTHHmmssZ.", "DATE" },
        { "header", "An extra header \"Name:value\" to add before signing (repeatable).", "HEADER" },
        { "s3", "Sign as the S3 provider does (adds x-amz-content-sha256)." },
        { "unsigned-payload", "With --s3: sign with UNSIGNED-PAYLOAD instead of the body hash." },
    });
    parser.process(app);
    for (const char *required : { "access-key", "secret-key", "region", "service", "date" })
        if (!parser.isSet(required))
            return fail(QStringLiteral("--%1 is required").arg(required));

    const QByteArray amzDate = parser.value("date").toLatin1();
    QDateTime date
        = QDateTime::fromString(QString::fromLatin1(amzDate), QStringLiteral("yyyyMMdd'T'HHmmss'Z'"));
    if (!date.isValid())
        return fail(QStringLiteral("--date must look like 20150830T123600Z"));

    QFile in;
    if (!in.open(stdin, QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot read stdin"));
    RequestFile file;
    if (!RequestFile::parse(in.readAll(), file))
        return fail(QStringLiteral("no request line on stdin"));
    for (const QString &header : parser.values("header")) {
        const qsizetype colon = header.indexOf(u':');
        if (colon <= 0)
            return fail(QStringLiteral("--header must be Name:value"));
        file.request.addHeader(header.left(colon).toUtf8(), header.mid(colon + 1).toUtf8());
    }

    const AWSSigV4 signer { parser.value("access-key"), parser.value("secret-key"), parser.value("region"),
        parser.value("service") };
    AWSSigV4::Signature signature;
    if (parser.isSet("s3")) {
        const QByteArray payloadHash = parser.isSet("unsigned-payload") ? QByteArray("UNSIGNED-PAYLOAD")
                                                                        : AWSSigV4::sha256Hex(file.body);
        QDateTime utc = date;
        utc.setTimeSpec(Qt::UTC);
        signer.sign(file.request, payloadHash, utc);
        // sign() keeps its texts to itself; recomputing over the signed
        // headers without Authorization gives the same ones.
        file.request.headers.removeIf([](const auto &field) { return field.name == "Authorization"; });
        signature = signer.authorize(file.request, payloadHash, AWSSigV4::amzDate(utc));
    } else {
        if (!file.request.hasHeader("Host"))
            file.request.setHeader("Host", file.request.url.host().toUtf8());
        file.request.setHeader("X-Amz-Date", amzDate);
        signature = signer.authorize(file.request, AWSSigV4::sha256Hex(file.body), amzDate);
    }
    std::fwrite(
        signature.canonicalRequest.constData(), 1, std::size_t(signature.canonicalRequest.size()), stdout);
    std::fputs("\n\n", stdout);
    std::fwrite(signature.stringToSign.constData(), 1, std::size_t(signature.stringToSign.size()), stdout);
    std::fputs("\n\n", stdout);
    std::fwrite(signature.authorization.constData(), 1, std::size_t(signature.authorization.size()), stdout);
    std::fputs("\n", stdout);
    return 0;
}
