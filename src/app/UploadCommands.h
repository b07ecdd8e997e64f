#pragma once

#include "app/CommandRouter.h"

#include <QString>
#include <QStringList>

class AppSettings;
class Notifying;
class UploadService;

// The upload verbs as the running copy answers them: `upload FILE` sends the
// file to the bucket and answers with its link once it is there (the link is
// on the clipboard too, and a notice says so); `cloud-credentials --reload`
// is how the command line, having written the credential file, tells the
// running copy to take the new keys.
class UploadCommands
{
public:
    using Reply = CommandRouter::Reply;

    UploadCommands(UploadService &uploads, AppSettings &settings, Notifying &notifier);

    void registerCommands(CommandRouter &router);

    // The verb's arguments, after the verb.
    Reply upload(const QStringList &arguments);
    Reply cloudCredentials(const QStringList &arguments);

    // Why a path can't be uploaded; empty when it can.
    static QString unusablePath(const QString &path);

private:
    UploadService &m_uploads;
    AppSettings &m_settings;
    Notifying &m_notifier;
};
