#pragma once

#include "settings/CredentialKeychain.h"

// The desktop's keyring through the Secret Service (libsecret): GNOME's
// keyring, KWallet's Secret Service, KeePassXC... Items are matched by their
// attributes "service" and "account", whatever schema stored them. Read,
// unlock and delete only: nothing here ever stores an item. No Secret Service
// on the session bus means no item. Main thread; an unlock may show the
// keyring's own prompt and waits for the user's answer.
class KeychainStore : public CredentialKeychain
{
public:
    bool exists(const QString &account) override;
    ReadResult read(const QString &account) override;
    bool remove(const QString &account) override;
};
