// Helper of the upload benchmark.
//
//   glimpso-upload-bench-helper desktop WIDTHxHEIGHT OUT.png
//       writes the benchmarks' synthetic desktop as PNG, for the root window
//   glimpso-upload-bench-helper put FILE KEY RUNS
//       the bare PUT the overlay's upload is measured against: FILE's bytes,
//       held in memory, stored RUNS times with the S3 library alone (a fresh
//       provider and connection each time, as every upload has), each time
//       printed in milliseconds; the server and keys come from S3_ENDPOINT,
//       S3_REGION, S3_ACCESS_KEY_ID, S3_SECRET_ACCESS_KEY and S3_BUCKET
//   glimpso-upload-bench-helper encode FILE RUNS
//       the time to encode FILE's picture as a capture's PNG, in milliseconds
#include "cloud/S3CompatibleProvider.h"
#include "output/ImageEncoder.h"

#include "../support/SyntheticDesktop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>

#include <cstdio>

using glimpso::cloud::S3CompatibleProvider;

namespace {

int desktop(const QString &size, const QString &out)
{
    const QStringList parts = size.split(u'x');
    const QImage image = syntheticDesktop(QSize(parts.value(0).toInt(), parts.value(1).toInt()), QImage::Format_RGB32);
    return image.save(out, "PNG") ? 0 : 1;
}

int put(const QString &path, const QString &key, int runs)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QByteArray bytes = file.readAll();
    S3CompatibleProvider::Config config;
    config.endpoint = QUrl(qEnvironmentVariable("S3_ENDPOINT"));
    config.region = qEnvironmentVariable("S3_REGION");
    config.bucket = qEnvironmentVariable("S3_BUCKET");
    config.accessKeyID = qEnvironmentVariable("S3_ACCESS_KEY_ID");
    config.secretAccessKey = qEnvironmentVariable("S3_SECRET_ACCESS_KEY");
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        clock.start();
        S3CompatibleProvider provider(config);
        provider.upload(bytes, key + QString::number(i) + QStringLiteral(".png"), QStringLiteral("image/png"));
        std::printf("%.1f\n", double(clock.nsecsElapsed()) / 1e6);
    }
    return 0;
}

int encode(const QString &path, int runs)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        clock.start();
        const QByteArray png = ImageEncoder::png(image);
        std::printf("%.1f %lld\n", double(clock.nsecsElapsed()) / 1e6, qlonglong(png.size()));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() == 4 && args[1] == u"desktop")
        return desktop(args[2], args[3]);
    if (args.size() == 5 && args[1] == u"put")
        return put(args[2], args[3], args[4].toInt());
    if (args.size() == 4 && args[1] == u"encode")
        return encode(args[2], args[3].toInt());
    std::fputs("usage: glimpso-upload-bench-helper desktop WxH OUT.png | put FILE KEY RUNS | encode FILE RUNS\n", stderr);
    return 2;
}
