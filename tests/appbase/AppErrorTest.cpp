#include "appbase/AppError.h"

#include <QFuture>
#include <QPromise>

#include <gtest/gtest.h>

TEST(AppError, DescriptionsCarryTheirPayload)
{
    EXPECT_EQ(AppError::captureFailed("no picture").errorDescription(), "Capture failed: no picture");
    EXPECT_EQ(AppError::fileIOFailed("disk full").errorDescription(), "File write failed: disk full");
    EXPECT_EQ(AppError::uploadFailed("403").errorDescription(), "Upload failed: 403");
}

TEST(AppError, SaveFolderNamesOnlyTheLastComponent)
{
    const QString expected = QString::fromUtf8(
        "glimpso can't save to “Shots”. Choose the folder again in Settings › General › Save to, so glimpso can keep "
        "access to it.");
    EXPECT_EQ(AppError::saveFolderUnavailable("/home/ana/Pictures/Shots").errorDescription(), expected);
    EXPECT_EQ(AppError::saveFolderUnavailable("/home/ana/Pictures/Shots/").errorDescription(), expected);
}

TEST(AppError, FixedTexts)
{
    EXPECT_EQ(AppError::consentRevoked().errorDescription(),
              "Screen capture permission not granted. Allow glimpso when your desktop asks, or in its privacy "
              "settings, then press the hotkey again.");
    EXPECT_EQ(AppError::displayNotFound().errorDescription(), "No display available");
    EXPECT_EQ(AppError::croppingFailed().errorDescription(), "Cropping region failed");
    EXPECT_EQ(AppError::noDisplayAtRegion().errorDescription(), "No display found at selected region");
    EXPECT_EQ(AppError::uploadNotConfigured().errorDescription(),
              QString::fromUtf8("No upload provider configured. Set one up in Settings → Cloud."));
    EXPECT_EQ(AppError::keychainDenied().errorDescription(),
              QString::fromUtf8("Keyring access was denied, so the saved upload credentials couldn't be migrated. "
                                "Try again and click “Allow” once, or re-enter the keys in Settings → Cloud."));
}

TEST(AppError, CasesKeepDeclarationOrder)
{
    EXPECT_LT(int(AppError::Case::captureFailed), int(AppError::Case::fileIOFailed));
    EXPECT_EQ(int(AppError::Case::keychainDenied), 9);
    EXPECT_EQ(AppError::croppingFailed().kind(), AppError::Case::croppingFailed);
    EXPECT_EQ(AppError::croppingFailed().caseName(), "croppingFailed");
    EXPECT_STREQ(AppError::displayNotFound().what(), "No display available");
}

TEST(AppError, CrossesAFutureWithItsCase)
{
    QPromise<int> promise;
    QFuture<int> future = promise.future();
    promise.start();
    promise.setException(AppError::saveFolderUnavailable("/x/Out"));
    promise.finish();
    try {
        future.waitForFinished();
        FAIL() << "no exception";
    } catch (const AppError &error) {
        EXPECT_EQ(error.kind(), AppError::Case::saveFolderUnavailable);
        EXPECT_EQ(error.payload(), "/x/Out");
    }
}
