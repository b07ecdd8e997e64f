#pragma once

#include <QObject>
#include <QString>

#include <functional>

// Receives the single-instance signals of other copies and hands them on.
class DBusSignalRelay : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    std::function<void()> onHandOff;
    std::function<void(const QString &)> onClaim;

public Q_SLOTS:
    void handOff();
    void claim(const QString &processId);
};
