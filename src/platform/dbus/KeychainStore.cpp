#include "platform/dbus/KeychainStore.h"

#include "platform/dbus/SecretLibrary.h"

#include <QLoggingCategory>
#include <QStringDecoder>

#include <optional>

Q_LOGGING_CATEGORY(lcKeychain, "glimpso.KeychainStore", QtInfoMsg)

namespace {

// Matches items by their attributes alone, also those stored without a
// schema name or under another one (secret-tool, an older version).
const SecretSchema schema = {
    "com.tovarine.glimpso",
    SECRET_SCHEMA_DONT_MATCH_NAME,
    {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}, {nullptr, {}}},
    0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

std::optional<QString> strictUtf8(const char *bytes, gsize length)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(QByteArrayView(bytes, qsizetype(length)));
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

// One connection to the Secret Service, the items of one account, and the
// last error; every GLib object taken here is given back when it goes.
class Session
{
public:
    Session(const SecretLibrary &lib, const QString &account) : m_lib(lib)
    {
        m_service = m_lib.serviceGetSync(SECRET_SERVICE_NONE, nullptr, &m_error);
        if (!m_service)
            return;
        const QByteArray serviceText = CredentialKeychain::service.toUtf8();
        const QByteArray accountText = account.toUtf8();
        GHashTable *attributes = m_lib.hashTableNew(m_lib.strHash, m_lib.strEqual);
        m_lib.hashTableInsert(attributes, const_cast<char *>("service"), const_cast<char *>(serviceText.constData()));
        m_lib.hashTableInsert(attributes, const_cast<char *>("account"), const_cast<char *>(accountText.constData()));
        // Locked items are listed too; nothing is unlocked and no secret is
        // read, so this never asks the user anything.
        m_items = m_lib.serviceSearchSync(m_service, &schema, attributes, SECRET_SEARCH_ALL, nullptr, &m_error);
        m_lib.hashTableUnref(attributes);
    }
    ~Session()
    {
        clearError();
        if (m_items)
            m_lib.listFreeFull(m_items, m_lib.objectUnref);
        if (m_service)
            m_lib.objectUnref(m_service);
    }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Whether the service answered the search; else errorText says why.
    bool searched() const { return m_service && !m_error; }
    GList *items() const { return m_items; }
    int errorCode() const { return m_error ? m_error->code : 0; }

    QString errorText() const
    {
        if (!m_error)
            return QStringLiteral("no error");
        QString text = QString::fromUtf8(m_error->message);
        if (const QString name = remoteError(); !name.isEmpty())
            text += QStringLiteral(" (%1)").arg(name);
        return text;
    }

    // No Secret Service on the bus, nor one the bus could start.
    bool noService() const
    {
        if (!m_service)
            return true;
        const QString name = remoteError();
        return name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
            || name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")
            || name == QLatin1String("org.freedesktop.DBus.Error.Spawn.ChildExited");
    }

    // The user refused to unlock, or the keyring could not ask.
    bool refused() const
    {
        if (!m_error)
            return false;
        if (m_error->domain == m_lib.ioErrorQuark() && m_error->code == G_IO_ERROR_CANCELLED)
            return true;
        const QString name = remoteError();
        return name == QLatin1String("org.freedesktop.DBus.Error.AccessDenied")
            || name == QLatin1String("org.freedesktop.Secret.Error.IsLocked");
    }

    // Unlocks the item, asking the user if the keyring wants to; whether it is open now.
    bool unlock(SecretItem *item)
    {
        if (!m_lib.itemGetLocked(item))
            return true;
        GList *toUnlock = m_lib.listAppend(nullptr, item);
        GList *unlocked = nullptr;
        m_lib.serviceUnlockSync(m_service, toUnlock, nullptr, &unlocked, &m_error);
        m_lib.listFreeFull(toUnlock, [](gpointer) {});
        if (unlocked)
            m_lib.listFreeFull(unlocked, m_lib.objectUnref);
        return !m_error && !m_lib.itemGetLocked(item);
    }

    // The item's secret as text; absent when it has none or it is not UTF-8.
    std::optional<QString> secret(SecretItem *item)
    {
        if (!m_lib.itemLoadSecretSync(item, nullptr, &m_error))
            return std::nullopt;
        SecretValue *value = m_lib.itemGetSecret(item);
        if (!value)
            return std::nullopt;
        gsize length = 0;
        const gchar *bytes = m_lib.valueGet(value, &length);
        std::optional<QString> text = bytes ? strictUtf8(bytes, length) : std::nullopt;
        m_lib.valueUnref(value);
        return text;
    }

    bool erase(SecretItem *item) { return m_lib.itemDeleteSync(item, nullptr, &m_error); }

private:
    void clearError()
    {
        if (m_error)
            m_lib.errorFree(m_error);
        m_error = nullptr;
    }
    QString remoteError() const
    {
        gchar *remote = m_lib.dbusErrorGetRemoteError(m_error);
        const QString name = QString::fromUtf8(remote);
        if (remote)
            m_lib.free(remote);
        return name;
    }

    const SecretLibrary &m_lib;
    SecretService *m_service = nullptr;
    GList *m_items = nullptr;
    GError *m_error = nullptr;
};

const SecretLibrary *library()
{
    const SecretLibrary *lib = SecretLibrary::loaded();
    if (!lib)
        qCInfo(lcKeychain, "libsecret is not installed: no keyring to look into");
    return lib;
}

} // namespace

bool KeychainStore::exists(const QString &account)
{
    const SecretLibrary *lib = library();
    if (!lib)
        return false;
    const Session session(*lib, account);
    if (!session.searched()) {
        // Mostly no keyring daemon on this bus, which means nothing to move.
        qCInfo(lcKeychain, "no keyring to look into: %s", qUtf8Printable(session.errorText()));
        return false;
    }
    return session.items() != nullptr;
}

CredentialKeychain::ReadResult KeychainStore::read(const QString &account)
{
    const SecretLibrary *lib = library();
    if (!lib)
        return ReadResult::missing();
    Session session(*lib, account);
    if (!session.searched()) {
        if (session.noService())
            return ReadResult::missing();
        qCCritical(lcKeychain, "reading %s failed: %s", qUtf8Printable(account), qUtf8Printable(session.errorText()));
        return ReadResult::failed(session.errorCode());
    }
    if (!session.items())
        return ReadResult::missing();
    auto *item = static_cast<SecretItem *>(session.items()->data);
    if (!session.unlock(item)) {
        if (session.refused() || session.errorCode() == 0) {
            qCCritical(lcKeychain, "the keyring holding %s stayed locked", qUtf8Printable(account));
            return ReadResult::denied();
        }
        qCCritical(lcKeychain, "unlocking %s failed: %s", qUtf8Printable(account), qUtf8Printable(session.errorText()));
        return ReadResult::failed(session.errorCode());
    }
    const std::optional<QString> text = session.secret(item);
    if (session.errorCode() != 0) {
        qCCritical(lcKeychain, "reading %s failed: %s", qUtf8Printable(account), qUtf8Printable(session.errorText()));
        return session.refused() ? ReadResult::denied() : ReadResult::failed(session.errorCode());
    }
    return text ? ReadResult::found(*text) : ReadResult::missing();
}

bool KeychainStore::remove(const QString &account)
{
    const SecretLibrary *lib = library();
    if (!lib)
        return true;
    Session session(*lib, account);
    if (!session.searched()) {
        if (session.noService())
            return true;
        qCCritical(lcKeychain, "deleting %s failed: %s", qUtf8Printable(account), qUtf8Printable(session.errorText()));
        return false;
    }
    for (GList *entry = session.items(); entry; entry = entry->next) {
        if (!session.erase(static_cast<SecretItem *>(entry->data))) {
            qCCritical(lcKeychain, "deleting %s failed: %s", qUtf8Printable(account),
                       qUtf8Printable(session.errorText()));
            return false;
        }
    }
    return true;
}
