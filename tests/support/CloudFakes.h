#pragma once

#include "settings/AppSettings.h"
#include "settings/CredentialFile.h"
#include "settings/CredentialKeychain.h"

#include "SettingsFakes.h"

#include <QStringList>
#include <QTemporaryDir>

#include <map>

// A keyring in memory that counts every question it is asked.
struct FakeKeychain : CredentialKeychain {
    std::map<QString, ReadResult> items;
    int existsCalls = 0;
    int readCalls = 0;
    QStringList removed;

    bool exists(const QString &account) override
    {
        ++existsCalls;
        return items.count(account) > 0;
    }
    ReadResult read(const QString &account) override
    {
        ++readCalls;
        const auto it = items.find(account);
        return it == items.end() ? ReadResult::missing() : it->second;
    }
    bool remove(const QString &account) override
    {
        removed << account;
        items.erase(account);
        return true;
    }
    int calls() const { return existsCalls + readCalls + int(removed.size()); }
};

// Settings in memory with a complete S3-compatible bucket, credentials in a
// file of a temporary folder, and the keyring above.
struct CloudSettings {
    QTemporaryDir home;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings{storage, login};
    FakeKeychain keychain;
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
