#pragma once

#include "output/DesktopOpener.h"
#include "output/Notifier.h"
#include "output/NotificationBackend.h"
#include "output/Toasting.h"
#include "settings/AppSettings.h"

#include "SettingsFakes.h"

#include <QList>
#include <QStringList>
#include <QUrl>

#include <deque>
#include <functional>

// A notification server in memory: it keeps what was sent, answers each send
// with the result at the head of `answers` (sent, with ids from 1, when there
// is none), and lets a test click and close notifications.
struct FakeNotificationBackend : NotificationBackend {
    bool available = true;
    QList<Notification> sent;
    std::deque<SendResult> answers;
    unsigned nextID = 1;
    int probes = 0;

    void probe(std::function<void(bool, const QString &)> done) override
    {
        ++probes;
        done(available, available ? QStringLiteral("fake 1.0") : QStringLiteral("no server"));
    }
    void send(const Notification &notification, std::function<void(const SendResult &)> done) override
    {
        sent.append(notification);
        SendResult result{SendResult::Status::sent, 0, {}};
        if (!answers.empty()) {
            result = answers.front();
            answers.pop_front();
        }
        if (result.status == SendResult::Status::sent)
            result.id = nextID++;
        done(result);
    }
    void click(unsigned id, const QString &key) { onClicked(id, key); }
    void close(unsigned id) { onClosed(id); }
};

// A toast that keeps what it was asked to show.
struct FakeToast : Toasting {
    struct Shown {
        QString title;
        QString body;
        double seconds;
        std::function<void()> onClick;
    };
    QList<Shown> shown;
    int dismissals = 0;

    void show(const QString &title, const QString &body, double seconds, std::function<void()> onClick) override
    {
        shown.append({title, body, seconds, std::move(onClick)});
    }
    void dismiss() override { ++dismissals; }
    void changeText(const QString &title, const QString &body) override
    {
        if (!shown.isEmpty()) {
            shown.last().title = title;
            shown.last().body = body;
        }
        ++changes;
    }
    int changes = 0;
};

// The desktop's openers, recorded.
struct FakeDesktopOpener : DesktopOpener {
    QList<QUrl> opened;
    QStringList revealed;
    void open(const QUrl &url) override { opened.append(url); }
    void reveal(const QString &path) override { revealed.append(path); }
};

// A notifier over the fakes above, with its settings in memory.
struct NotifierWithFakes {
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    FakeNotificationBackend server;
    FakeToast toast;
    FakeDesktopOpener desktop;
    Notifier notifier{settings, storage, server, toast, desktop};
};
