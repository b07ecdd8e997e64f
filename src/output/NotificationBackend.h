#pragma once

#include <QList>
#include <QPair>
#include <QString>

#include <functional>

// The desktop's notification service, as the notifier needs it: whether there
// is one, sending a notification with buttons, and hearing which was clicked.
// Every answer comes back on the main thread, later, never inside the call.
class NotificationBackend
{
public:
    struct Notification {
        QString title;
        QString body;
        // Buttons as (key, label), in order. The key "default" is a click on
        // the notification itself and needs no label.
        QList<QPair<QString, QString>> buttons;
        // The desktop's usual notification sound.
        bool sound = false;
    };

    struct SendResult {
        enum class Status {
            sent,
            // Nobody serves notifications on this desktop (or will start to).
            noServer,
            // A server is there and refused or failed.
            failed,
        };
        Status status = Status::failed;
        unsigned id = 0;   // the server's id of a sent notification
        QString detail;    // why, when not sent
    };

    virtual ~NotificationBackend() = default;

    // Whether notifications can be shown at all; `who` names the server, or
    // says why there is none.
    virtual void probe(std::function<void(bool available, const QString &who)> done) = 0;
    virtual void send(const Notification &notification, std::function<void(const SendResult &)> done) = 0;

    // A button of a sent notification, or the notification itself, was clicked.
    std::function<void(unsigned id, const QString &key)> onClicked;
    // A sent notification is gone from the screen and can no longer be clicked.
    std::function<void(unsigned id)> onClosed;
};
