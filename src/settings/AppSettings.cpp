#include "settings/AppSettings.h"

#include <QDir>
#include <QLoggingCategory>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcLaunchAtLogin, "glimpso.LaunchAtLogin", QtInfoMsg)

namespace {
// What is left of an old scheme that kept a secret in the settings; removed
// unread at every start.
const QString obsoleteApiKey = QStringLiteral("settings.cloud.apiKey");
} // namespace

AppSettings::AppSettings(SettingsStorage &storage, LoginItem &loginItem, QObject *parent)
    : QObject(parent)
    , m_storage(storage)
    , m_notify([this](const QString &key) { publish(key); })
    , m_loginItem(loginItem)
    , m_launchAtLogin(loginItem.isEnabled())
{
    m_storage.remove(obsoleteApiKey);
}

QString AppSettings::defaultSaveDirectory()
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (pictures.isEmpty())
        return QDir::tempPath();
    return pictures + QStringLiteral("/Screenshots");
}

std::array<Setting<Hotkey> *, 11> AppSettings::globalHotkeys()
{
    return {&hotkeyRegion,   &hotkeyAllDisplays, &hotkeyWindow,      &hotkeyText,
            &hotkeyHistory,  &hotkeyGIF,         &hotkeyVideo,       &hotkeyGIFWindow,
            &hotkeyGIFScreen, &hotkeyVideoWindow, &hotkeyVideoScreen};
}

void AppSettings::publish(const QString &key)
{
    Q_EMIT changed(key);
    for (const Setting<Hotkey> *hotkey : globalHotkeys()) {
        if (hotkey->key() == key) {
            Q_EMIT hotkeysChanged();
            break;
        }
    }
}

void AppSettings::setLaunchAtLogin(bool enabled)
{
    // The property keeps what the user asked for even when the desktop refuses;
    // the next start reads the real state.
    const bool previous = m_launchAtLogin;
    m_launchAtLogin = enabled;
    if (m_loginItem.isEnabled() != enabled) {
        const QString error = m_loginItem.setEnabled(enabled);
        if (!error.isEmpty())
            qCCritical(lcLaunchAtLogin, "launchAtLogin toggle failed: %s", qUtf8Printable(error));
    }
    if (previous != enabled)
        Q_EMIT changed(QStringLiteral("launchAtLogin"));
}

Hotkey AppSettings::editorShortcut(EditorShortcut shortcut) const
{
    const auto &map = editorShortcuts();
    const auto it = map.find(shortcut);
    return it != map.end() ? it->second : EditorShortcuts::defaultHotkey(shortcut);
}

void AppSettings::setEditorShortcut(EditorShortcut shortcut, const Hotkey &hotkey)
{
    EditorShortcutMap map = editorShortcuts();
    map[shortcut] = hotkey;
    editorShortcuts.set(map);
}

void AppSettings::reloadShortcuts()
{
    m_storage.reread();
    for (Setting<Hotkey> *hotkey : globalHotkeys())
        hotkey->reload();
    editorShortcuts.reload();
}

void AppSettings::resetShortcuts()
{
    for (Setting<Hotkey> *hotkey : {&hotkeyRegion, &hotkeyAllDisplays, &hotkeyText, &hotkeyWindow, &hotkeyHistory,
                                    &hotkeyGIF, &hotkeyVideo, &hotkeyGIFWindow, &hotkeyGIFScreen,
                                    &hotkeyVideoWindow, &hotkeyVideoScreen})
        hotkey->reset();
    editorShortcuts.set(EditorShortcuts::defaults());
}

void AppSettings::resetAppearance()
{
    // The window background settings are left alone on purpose: they belong to
    // window captures, not to the look of the overlay.
    defaultColorHex.reset();
    accentColorHex.reset();
    overlayColorHex.reset();
    overlayOpacity.reset();
    toolbarBgColorHex.reset();
    toolbarIconColorHex.reset();
    toolbarOpacity.reset();
    toolbarCornerRadius.reset();
    strokeWidth.reset();
}

void AppSettings::setSaveDirectory(const QString &path)
{
    saveDirectoryPath.set(path);
}

AppSettings::SaveDirectoryAccess AppSettings::accessSaveDirectory() const
{
    return {saveDirectoryPath(), [] {}};
}

void AppSettings::setCloudAccessKeyID(const QString &value)
{
    const bool differs = value != m_cloudCredentials.accessKeyID();
    m_cloudCredentials.setAccessKeyID(value);
    if (differs)
        Q_EMIT changed(QStringLiteral("cloudAccessKeyID"));
}

void AppSettings::setCloudSecretAccessKey(const QString &value)
{
    const bool differs = value != m_cloudCredentials.secretAccessKey();
    m_cloudCredentials.setSecretAccessKey(value);
    if (differs)
        Q_EMIT changed(QStringLiteral("cloudSecretAccessKey"));
}

void AppSettings::setCloudCredentials(const QString &accessKeyID, const QString &secretAccessKey)
{
    const bool accessKeyChanged = accessKeyID != m_cloudCredentials.accessKeyID();
    const bool secretChanged = secretAccessKey != m_cloudCredentials.secretAccessKey();
    m_cloudCredentials.set(accessKeyID, secretAccessKey);
    if (accessKeyChanged)
        Q_EMIT changed(QStringLiteral("cloudAccessKeyID"));
    if (secretChanged)
        Q_EMIT changed(QStringLiteral("cloudSecretAccessKey"));
}

bool AppSettings::loadCloudCredentials()
{
    return m_cloudCredentials.load();
}

void AppSettings::reloadCloudCredentials()
{
    const QString accessKeyID = m_cloudCredentials.accessKeyID();
    const QString secret = m_cloudCredentials.secretAccessKey();
    m_cloudCredentials.reload();
    if (accessKeyID != m_cloudCredentials.accessKeyID())
        Q_EMIT changed(QStringLiteral("cloudAccessKeyID"));
    if (secret != m_cloudCredentials.secretAccessKey())
        Q_EMIT changed(QStringLiteral("cloudSecretAccessKey"));
}

void AppSettings::useCredentialStores(CredentialFile file, CredentialKeychain &keychain)
{
    m_cloudCredentials.useStores(std::move(file), keychain);
}
