#pragma once

#include <QString>

// Where an older version of glimpso kept the cloud credentials: the desktop's
// keyring, under the service "com.tovarine.glimpso" with one item per
// account. It is only ever read, to move what is left there into the
// credential file, and cleared; nothing writes to it any more.
class CredentialKeychain
{
public:
    struct ReadResult {
        // Declaration order is part of the vocabulary; keep it.
        enum class Outcome {
            found,  // the item's secret, as UTF-8 text
            denied, // the keyring stayed locked: the user refused or could not be asked
            failed, // any other failure, with the keyring's own code
            missing // no such item, or one whose secret is not UTF-8 text
        };
        Outcome outcome = Outcome::missing;
        QString text;   // found
        int status = 0; // failed

        static ReadResult found(const QString &text) { return {Outcome::found, text, 0}; }
        static ReadResult denied() { return {Outcome::denied, {}, 0}; }
        static ReadResult failed(int status) { return {Outcome::failed, {}, status}; }
        static ReadResult missing() { return {Outcome::missing, {}, 0}; }
    };

    static inline const QString service = QStringLiteral("com.tovarine.glimpso");
    static inline const QString accessKeyAccount = QStringLiteral("cloud.accessKeyID");
    static inline const QString secretAccount = QStringLiteral("cloud.secretAccessKey");

    virtual ~CredentialKeychain() = default;
    // Whether an item exists; looks at its attributes only, so it never asks
    // the user anything. No keyring at all means no item.
    virtual bool exists(const QString &account) = 0;
    // The item's secret; may ask the user to unlock the keyring.
    virtual ReadResult read(const QString &account) = 0;
    // Deletes the item; true when it is gone, also when it was never there.
    virtual bool remove(const QString &account) = 0;
};

// A desktop without a keyring: there is nothing to move.
class NoCredentialKeychain : public CredentialKeychain
{
public:
    bool exists(const QString &) override { return false; }
    ReadResult read(const QString &) override { return ReadResult::missing(); }
    bool remove(const QString &) override { return true; }
};
