#include "cloud/ProviderChoice.h"

#include "settings/AppSettings.h"

using glimpso::cloud::S3CompatibleProvider;

namespace ProviderChoice {

QString trimBlanks(const QString &text)
{
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text.at(begin)))
        ++begin;
    while (end > begin && isBlank(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

QUrl publicBase(const QString &text)
{
    const QUrl url(trimBlanks(text), QUrl::StrictMode);
    // A link needs somewhere to point, too.
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return {};
    return url;
}

std::optional<S3CompatibleProvider::Config> config(AppSettings &settings)
{
    const CloudProvider provider = settings.cloudProvider();
    if (provider == CloudProvider::none)
        return std::nullopt;
    if (!settings.cloudCredentialsLoaded())
        settings.loadCloudCredentials();

    S3CompatibleProvider::Config config;
    config.accessKeyID = trimBlanks(settings.cloudAccessKeyID());
    config.secretAccessKey = trimBlanks(settings.cloudSecretAccessKey());
    config.bucket = trimBlanks(settings.cloudBucket());
    if (config.accessKeyID.isEmpty() || config.secretAccessKey.isEmpty() || config.bucket.isEmpty())
        return std::nullopt;
    config.publicBaseURL = publicBase(settings.cloudPublicBaseURL());

    if (provider == CloudProvider::s3Compatible) {
        const QUrl endpoint(trimBlanks(settings.cloudEndpoint()), QUrl::StrictMode);
        if (!endpoint.isValid() || endpoint.scheme().isEmpty() || endpoint.host().isEmpty())
            return std::nullopt;
        config.endpoint = endpoint;
        const QString region = trimBlanks(settings.cloudRegion());
        config.region = region.isEmpty() ? QString::fromLatin1(defaultS3Region) : region;
        config.displayName = QStringLiteral("S3");
    } else {
        const QString account = trimBlanks(settings.cloudAccountID());
        if (account.isEmpty())
            return std::nullopt;
        const QUrl endpoint(QStringLiteral("https://") + account + QLatin1String(r2HostSuffix), QUrl::StrictMode);
        if (!endpoint.isValid() || endpoint.host().isEmpty())
            return std::nullopt;
        config.endpoint = endpoint;
        config.region = QString::fromLatin1(r2Region);
        config.displayName = QStringLiteral("Cloudflare R2");
    }
    config.pathStyle = true;
    // The provider trims the prefix itself.
    config.keyPrefix = settings.cloudKeyPrefix();
    return config;
}

} // namespace ProviderChoice
