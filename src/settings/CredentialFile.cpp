#include "settings/CredentialFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcCredentialFile, "glimpso.CredentialFile", QtInfoMsg)

namespace {

const QString accessKeyField = QStringLiteral("accessKeyID");
const QString secretField = QStringLiteral("secretAccessKey");
constexpr QFileDevice::Permissions ownerOnlyFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ownerOnlyFolder = ownerOnlyFile | QFileDevice::ExeOwner;

void logFailure(const QString &description)
{
    qCCritical(lcCredentialFile, "save failed: %s", qUtf8Printable(description));
}

} // namespace

CredentialFile::CredentialFile() : CredentialFile(defaultPath()) { }

CredentialFile::CredentialFile(QString path) : m_path(std::move(path)) { }

QString CredentialFile::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/glimpso/")
        + QLatin1String(fileName);
}

std::optional<CredentialFile::Credentials> CredentialFile::read() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return decode(file.readAll());
}

bool CredentialFile::save(const Credentials &credentials) const
{
    const QFileInfo info(m_path);
    const QString folder = info.absolutePath();
    if (!QDir().mkpath(folder)) {
        logFailure(QStringLiteral("cannot make the folder %1").arg(folder));
        return false;
    }
    // The folder is glimpso's own: nobody else has business in it.
    if (!QFile::setPermissions(folder, ownerOnlyFolder)) {
        logFailure(QStringLiteral("cannot make %1 private").arg(folder));
        return false;
    }

    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly)) {
        logFailure(file.errorString());
        return false;
    }
    // Private before the first byte goes in, so the secret is never in a
    // file that others can read, not even in the temporary one.
    if (!file.setPermissions(ownerOnlyFile)) {
        logFailure(file.errorString());
        file.cancelWriting();
        return false;
    }
    const QByteArray bytes = encode(credentials);
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        logFailure(file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!QFile::setPermissions(m_path, ownerOnlyFile)) {
        logFailure(QStringLiteral("cannot make %1 private").arg(m_path));
        return false;
    }
    return true;
}

void CredentialFile::remove() const
{
    QFile::remove(m_path);
}

QByteArray CredentialFile::encode(const Credentials &credentials)
{
    QJsonObject object;
    object.insert(accessKeyField, credentials.accessKeyID);
    object.insert(secretField, credentials.secretAccessKey);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<CredentialFile::Credentials> CredentialFile::decode(const QByteArray &bytes)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const QJsonValue accessKey = object.value(accessKeyField);
    const QJsonValue secret = object.value(secretField);
    if (!accessKey.isString() || !secret.isString())
        return std::nullopt;
    return Credentials{accessKey.toString(), secret.toString()};
}
