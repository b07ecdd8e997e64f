#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The cloud access key and secret, kept in a file of their own in glimpso's
// data folder ("cloud-credentials.json"), never in the settings file and never
// in a log line. The file is readable by its owner only (0600) in a folder
// only its owner can enter (0700), and is replaced atomically, so a reader
// never sees half of it.
class CredentialFile
{
public:
    struct Credentials {
        QString accessKeyID;
        QString secretAccessKey;
        bool operator==(const Credentials &) const = default;
    };

    static constexpr const char *fileName = "cloud-credentials.json";

    // The file in $XDG_DATA_HOME/glimpso.
    CredentialFile();
    explicit CredentialFile(QString path);

    // $XDG_DATA_HOME/glimpso/cloud-credentials.json.
    static QString defaultPath();
    const QString &path() const { return m_path; }

    // Absent when the file is missing or does not decode.
    std::optional<Credentials> read() const;
    // Never throws: a failure is logged ("save failed: ...") and the answer is
    // false; the caller keeps the credentials in memory for this run.
    bool save(const Credentials &credentials) const;
    // Removes the file; a file that is not there is no failure.
    void remove() const;

    // The file's form: a JSON object with exactly the two keys "accessKeyID"
    // and "secretAccessKey". A decoder takes any object that has both as texts.
    static QByteArray encode(const Credentials &credentials);
    static std::optional<Credentials> decode(const QByteArray &bytes);

private:
    QString m_path;
};
