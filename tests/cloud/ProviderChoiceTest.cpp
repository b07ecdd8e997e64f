#include "cloud/ProviderChoice.h"
#include "cloud/UploadService.h"

#include "CloudFakes.h"

#include <gtest/gtest.h>

namespace {

struct ProviderChoiceTest : ::testing::Test, CloudSettings {
};

TEST_F(ProviderChoiceTest, NoProviderGivesNothingAndTouchesNoCredential)
{
    settings.cloudProvider.set(CloudProvider::none);
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
    EXPECT_EQ(UploadService::makeProvider(settings), nullptr);
    EXPECT_FALSE(settings.cloudCredentialsLoaded());
    EXPECT_EQ(keychain.calls(), 0);
}

TEST_F(ProviderChoiceTest, AnS3CompatibleBucketIsAddressedByPath)
{
    settings.cloudRegion.set(QStringLiteral("eu-west-3"));
    settings.cloudKeyPrefix.set(QStringLiteral(" /shots/ "));
    const auto config = ProviderChoice::config(settings);
    ASSERT_TRUE(config.has_value());
    EXPECT_EQ(config->endpoint, QUrl(QStringLiteral("http://127.0.0.1:9000")));
    EXPECT_EQ(config->region, QStringLiteral("eu-west-3"));
    EXPECT_EQ(config->bucket, QStringLiteral("shots"));
    EXPECT_TRUE(config->pathStyle);
    EXPECT_EQ(config->displayName, QStringLiteral("S3"));
    EXPECT_EQ(config->accessKeyID, QStringLiteral("test:tester"));
    EXPECT_EQ(config->secretAccessKey, QStringLiteral("testing"));
    // As it stands: the provider trims it.
    EXPECT_EQ(config->keyPrefix, QStringLiteral(" /shots/ "));
    EXPECT_TRUE(settings.cloudCredentialsLoaded());
}

TEST_F(ProviderChoiceTest, AnEmptyRegionIsUsEast1)
{
    settings.cloudRegion.set(QStringLiteral(" \t "));
    EXPECT_EQ(ProviderChoice::config(settings)->region, QStringLiteral("us-east-1"));
}

TEST_F(ProviderChoiceTest, AnEndpointWithoutASchemeGivesNothing)
{
    for (const char *endpoint : {"127.0.0.1:9000", "s3.example.com", "localhost:9000", "https://", ""}) {
        settings.cloudEndpoint.set(QString::fromLatin1(endpoint));
        EXPECT_FALSE(ProviderChoice::config(settings).has_value()) << endpoint;
    }
    settings.cloudEndpoint.set(QStringLiteral("\thttps://s3.example.com "));
    EXPECT_EQ(ProviderChoice::config(settings)->endpoint.host(), QStringLiteral("s3.example.com"));
}

TEST_F(ProviderChoiceTest, BlanksAroundTheKeysAndBucketAreCutButLineFeedsStay)
{
    ASSERT_TRUE(settings.loadCloudCredentials());
    settings.setCloudAccessKeyID(QStringLiteral("  key\t"));
    settings.cloudBucket.set(QStringLiteral(" shots "));
    const auto config = ProviderChoice::config(settings);
    ASSERT_TRUE(config.has_value());
    EXPECT_EQ(config->accessKeyID, QStringLiteral("key"));
    EXPECT_EQ(config->bucket, QStringLiteral("shots"));
    EXPECT_EQ(ProviderChoice::trimBlanks(QStringLiteral("\n a \n")), QStringLiteral("\n a \n"));
}

TEST_F(ProviderChoiceTest, AMissingKeySecretOrBucketGivesNothing)
{
    ASSERT_TRUE(settings.loadCloudCredentials());
    settings.cloudBucket.set(QStringLiteral("  "));
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
    settings.cloudBucket.set(QStringLiteral("shots"));
    settings.setCloudSecretAccessKey(QStringLiteral(" "));
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
    settings.setCloudSecretAccessKey(QStringLiteral("s"));
    settings.setCloudAccessKeyID(QString());
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
}

TEST_F(ProviderChoiceTest, AnUnusablePublicBaseIsIgnoredForTheObjectURL)
{
    settings.cloudPublicBaseURL.set(QStringLiteral("cdn.example.com/shots"));
    EXPECT_TRUE(ProviderChoice::config(settings)->publicBaseURL.isEmpty());
    settings.cloudPublicBaseURL.set(QStringLiteral("https://"));
    EXPECT_TRUE(ProviderChoice::config(settings)->publicBaseURL.isEmpty());
    settings.cloudPublicBaseURL.set(QStringLiteral(" https://cdn.example.com/shots "));
    EXPECT_EQ(ProviderChoice::config(settings)->publicBaseURL, QUrl(QStringLiteral("https://cdn.example.com/shots")));
}

TEST_F(ProviderChoiceTest, R2IsReachedThroughTheAccountsEndpointInRegionAuto)
{
    settings.cloudProvider.set(CloudProvider::r2);
    settings.cloudEndpoint.set(QStringLiteral("ignored"));
    settings.cloudRegion.set(QStringLiteral("ignored"));
    settings.cloudAccountID.set(QStringLiteral(" 0123456789abcdef0123456789abcdef "));
    const auto config = ProviderChoice::config(settings);
    ASSERT_TRUE(config.has_value());
    EXPECT_EQ(config->endpoint, QUrl(QStringLiteral("https://0123456789abcdef0123456789abcdef.r2.cloudflarestorage.com")));
    EXPECT_EQ(config->region, QStringLiteral("auto"));
    EXPECT_EQ(config->displayName, QStringLiteral("Cloudflare R2"));
    EXPECT_TRUE(config->pathStyle);
}

TEST_F(ProviderChoiceTest, R2WithoutAnAccountGivesNothing)
{
    settings.cloudProvider.set(CloudProvider::r2);
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
    settings.cloudAccountID.set(QStringLiteral("has blanks inside"));
    EXPECT_FALSE(ProviderChoice::config(settings).has_value());
}

TEST_F(ProviderChoiceTest, MakeProviderNamesItsPlace)
{
    const auto provider = UploadService::makeProvider(settings);
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->displayName(), QStringLiteral("S3"));
}

} // namespace
