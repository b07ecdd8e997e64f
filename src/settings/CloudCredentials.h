#pragma once

#include "settings/CredentialFile.h"
#include "settings/CredentialKeychain.h"

#include <QString>

// The cloud access key and secret of one run, and the rule for when they are
// read: only on first need, never at start, because reading an old keyring
// may ask the user to unlock it. Three states: not loaded, loaded, and denied
// (not loaded, and the last try stopped at a keyring that stayed locked).
// Main thread only.
class CloudCredentials
{
public:
    // The stores are the caller's and must outlive this object.
    CloudCredentials(CredentialFile file, CredentialKeychain &keychain);

    // Reads the credentials once: the credential file, or what an older
    // version left in the keyring, moved into the file. False only when the
    // keyring refused; the next call tries again.
    bool load();
    // The file was written by someone else (the command line): a run that
    // has loaded its credentials takes the file's. Nothing otherwise.
    void reload();

    bool loaded() const { return m_loaded; }
    bool denied() const { return m_denied; }
    const QString &accessKeyID() const { return m_accessKeyID; }
    const QString &secretAccessKey() const { return m_secretAccessKey; }

    // Each assignment is kept at once: both empty delete the file, anything
    // else is saved as it stands. Before the first load nothing is written,
    // so that a stray assignment can't wipe the file.
    void setAccessKeyID(const QString &value);
    void setSecretAccessKey(const QString &value);
    void set(const QString &accessKeyID, const QString &secretAccessKey);

    const CredentialFile &file() const { return m_file; }
    void useStores(CredentialFile file, CredentialKeychain &keychain);

private:
    bool migrateFromKeychain();
    void take(const CredentialFile::Credentials &credentials);
    void persist() const;

    CredentialFile m_file;
    CredentialKeychain *m_keychain;
    QString m_accessKeyID;
    QString m_secretAccessKey;
    bool m_loaded = false;
    bool m_denied = false;
};
