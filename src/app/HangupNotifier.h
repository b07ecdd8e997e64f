#pragma once

#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;

// SIGHUP delivered as a call on the main thread: the handler only writes a
// byte to a socket pair, and a socket notifier turns that into onHangup. One
// per process.
class HangupNotifier : public QObject
{
    Q_OBJECT

public:
    explicit HangupNotifier(QObject *parent = nullptr);
    ~HangupNotifier() override;

    std::function<void()> onHangup;

private:
    void readSignal();

    std::unique_ptr<QSocketNotifier> m_notifier;
};
