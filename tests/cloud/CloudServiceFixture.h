#pragma once

#include "settings/AppSettings.h"
#include "settings/CredentialFile.h"
#include "settings/CredentialKeychain.h"

#include "SettingsFakes.h"

#include <QTemporaryDir>

#include <map>

// Settings in memory with a complete S3-compatible bucket, credentials in a
// file of a temporary folder, and a keyring in memory that counts questions.
struct CountingKeychain : CredentialKeychain {
    std::map<QString, ReadResult> items;
    int questions = 0;
    bool exists(const QString &account) override
    {
        ++questions;
        return items.count(account) > 0;
    }
    ReadResult read(const QString &account) override
    {
        ++questions;
        const auto it = items.find(account);
        return it == items.end() ? ReadResult::missing() : it->second;
    }
    bool remove(const QString &account) override
    {
        ++questions;
        items.erase(account);
        return true;
    }
};

struct CloudSettings {
    QTemporaryDir home;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings{storage, login};
    CountingKeychain keychain;
    CredentialFile file{home.filePath(QStringLiteral("glimpso/cloud-credentials.json"))};

    CloudSettings()
    {
        settings.useCredentialStores(file, keychain);
        settings.cloudProvider.set(CloudProvider::s3Compatible);
        settings.cloudEndpoint.set(QStringLiteral("http://127.0.0.1:9000"));
        settings.cloudBucket.set(QStringLiteral("shots"));
        file.save({QStringLiteral("test:tester"), QStringLiteral("testing")});
    }
};
