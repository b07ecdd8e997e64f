#include "appbase/AppError.h"

#include <QFileInfo>

AppError::AppError(Case kind, QString payload) : m_case(kind), m_payload(std::move(payload))
{
    m_what = errorDescription().toUtf8();
}

AppError AppError::captureFailed(const QString &underlying) { return AppError(Case::captureFailed, underlying); }
AppError AppError::fileIOFailed(const QString &underlying) { return AppError(Case::fileIOFailed, underlying); }
AppError AppError::uploadFailed(const QString &text) { return AppError(Case::uploadFailed, text); }
AppError AppError::saveFolderUnavailable(const QString &path) { return AppError(Case::saveFolderUnavailable, path); }
AppError AppError::consentRevoked() { return AppError(Case::consentRevoked, {}); }
AppError AppError::displayNotFound() { return AppError(Case::displayNotFound, {}); }
AppError AppError::croppingFailed() { return AppError(Case::croppingFailed, {}); }
AppError AppError::noDisplayAtRegion() { return AppError(Case::noDisplayAtRegion, {}); }
AppError AppError::uploadNotConfigured() { return AppError(Case::uploadNotConfigured, {}); }
AppError AppError::keychainDenied() { return AppError(Case::keychainDenied, {}); }

static QString lastPathComponent(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    const QString name = QFileInfo(trimmed).fileName();
    return name.isEmpty() ? trimmed : name;
}

QString AppError::errorDescription() const
{
    switch (m_case) {
    case Case::captureFailed:
        return QStringLiteral("Capture failed: ") + m_payload;
    case Case::fileIOFailed:
        return QStringLiteral("File write failed: ") + m_payload;
    case Case::uploadFailed:
        return QStringLiteral("Upload failed: ") + m_payload;
    case Case::saveFolderUnavailable:
        return QStringLiteral("glimpso can't save to “") + lastPathComponent(m_payload)
            + QStringLiteral("”. Choose the folder again in Settings › General › Save to, so glimpso can keep "
                             "access to it.");
    case Case::consentRevoked:
        return QStringLiteral("Screen capture permission not granted. Allow glimpso when your desktop asks, or in "
                              "its privacy settings, then press the hotkey again.");
    case Case::displayNotFound:
        return QStringLiteral("No display available");
    case Case::croppingFailed:
        return QStringLiteral("Cropping region failed");
    case Case::noDisplayAtRegion:
        return QStringLiteral("No display found at selected region");
    case Case::uploadNotConfigured:
        return QStringLiteral("No upload provider configured. Set one up in Settings → Cloud.");
    case Case::keychainDenied:
        return QStringLiteral("Keyring access was denied, so the saved upload credentials couldn't be migrated. Try "
                              "again and click “Allow” once, or re-enter the keys in Settings → Cloud.");
    }
    return {};
}

QString AppError::caseName() const
{
    switch (m_case) {
    case Case::captureFailed: return QStringLiteral("captureFailed");
    case Case::fileIOFailed: return QStringLiteral("fileIOFailed");
    case Case::uploadFailed: return QStringLiteral("uploadFailed");
    case Case::saveFolderUnavailable: return QStringLiteral("saveFolderUnavailable");
    case Case::consentRevoked: return QStringLiteral("consentRevoked");
    case Case::displayNotFound: return QStringLiteral("displayNotFound");
    case Case::croppingFailed: return QStringLiteral("croppingFailed");
    case Case::noDisplayAtRegion: return QStringLiteral("noDisplayAtRegion");
    case Case::uploadNotConfigured: return QStringLiteral("uploadNotConfigured");
    case Case::keychainDenied: return QStringLiteral("keychainDenied");
    }
    return {};
}

const char *AppError::what() const noexcept { return m_what.constData(); }
