#include "settings/CloudCredentials.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcCloudCredentials, "glimpso.CloudCredentials", QtInfoMsg)

using ReadResult = CredentialKeychain::ReadResult;

CloudCredentials::CloudCredentials(CredentialFile file, CredentialKeychain &keychain)
    : m_file(std::move(file))
    , m_keychain(&keychain)
{
}

void CloudCredentials::useStores(CredentialFile file, CredentialKeychain &keychain)
{
    m_file = std::move(file);
    m_keychain = &keychain;
}

bool CloudCredentials::load()
{
    if (m_loaded)
        return true;
    if (const auto stored = m_file.read()) {
        take(*stored);
        return true;
    }
    // A missing or unreadable file: only an older version wrote the keyring.
    return migrateFromKeychain();
}

bool CloudCredentials::migrateFromKeychain()
{
    const bool hasAccessKey = m_keychain->exists(CredentialKeychain::accessKeyAccount);
    const bool hasSecret = m_keychain->exists(CredentialKeychain::secretAccount);
    if (!hasAccessKey && !hasSecret) {
        take({});
        return true;
    }

    const ReadResult accessKey = m_keychain->read(CredentialKeychain::accessKeyAccount);
    // A refusal stands for both: the user is not asked a second time.
    const ReadResult secret = accessKey.outcome == ReadResult::Outcome::denied
        ? ReadResult::denied()
        : m_keychain->read(CredentialKeychain::secretAccount);
    if (accessKey.outcome == ReadResult::Outcome::denied || secret.outcome == ReadResult::Outcome::denied) {
        qCCritical(lcCloudCredentials, "the keyring stayed locked; the credentials it holds are not moved yet");
        m_denied = true;
        return false;
    }
    for (const ReadResult *result : {&accessKey, &secret}) {
        if (result->outcome == ReadResult::Outcome::failed)
            qCCritical(lcCloudCredentials, "reading the keyring failed with code %d; that value counts as empty",
                       result->status);
    }
    const auto text = [](const ReadResult &result) {
        return result.outcome == ReadResult::Outcome::found ? result.text : QString();
    };
    const CredentialFile::Credentials moved{text(accessKey), text(secret)};
    take(moved);
    // The keyring is cleared only once the file holds its values, so that a
    // failed save loses nothing: the next run moves them again.
    if (!m_file.save(moved))
        return true;
    const bool accessKeyRemoved = m_keychain->remove(CredentialKeychain::accessKeyAccount);
    const bool secretRemoved = m_keychain->remove(CredentialKeychain::secretAccount);
    const bool removed = accessKeyRemoved && secretRemoved;
    qCInfo(lcCloudCredentials, "moved the cloud credentials from the keyring into %s%s",
           qUtf8Printable(m_file.path()), removed ? "" : "; the keyring kept some of its items");
    return true;
}

void CloudCredentials::take(const CredentialFile::Credentials &credentials)
{
    m_accessKeyID = credentials.accessKeyID;
    m_secretAccessKey = credentials.secretAccessKey;
    m_denied = false;
    m_loaded = true;
}

void CloudCredentials::reload()
{
    if (!m_loaded)
        return;
    const auto stored = m_file.read();
    take(stored.value_or(CredentialFile::Credentials{}));
}

void CloudCredentials::setAccessKeyID(const QString &value)
{
    m_accessKeyID = value;
    persist();
}

void CloudCredentials::setSecretAccessKey(const QString &value)
{
    m_secretAccessKey = value;
    persist();
}

void CloudCredentials::set(const QString &accessKeyID, const QString &secretAccessKey)
{
    m_accessKeyID = accessKeyID;
    m_secretAccessKey = secretAccessKey;
    persist();
}

void CloudCredentials::persist() const
{
    if (!m_loaded)
        return;
    if (m_accessKeyID.isEmpty() && m_secretAccessKey.isEmpty())
        m_file.remove();
    else
        m_file.save({m_accessKeyID, m_secretAccessKey});
}
