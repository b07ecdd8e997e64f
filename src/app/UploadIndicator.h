#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <map>
#include <optional>

class Notifier;
class UploadService;

// How uploads are going, for those that take longer than about a second: a
// progress notice that counts up in place, and the tray icon's tooltip. Short
// uploads show nothing but their result. Both go when the last upload ends;
// the caller's notice of success or failure follows. Main thread only.
class UploadIndicator : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultShowAfterMs = 1000;
    // A notice that took the progress notice's place stands this long before
    // the progress comes back (two uploads, one done).
    static constexpr int noticeStandsMs = 4000;

    UploadIndicator(UploadService &uploads, Notifier &notifier, std::function<void(const QString &)> setActivity,
                    int showAfterMs = defaultShowAfterMs, QObject *parent = nullptr);

    bool showing() const { return m_shown; }

    // "Uploading… 42%", "Uploading 2 files… 42%"; no number while a size is unknown.
    static QString title(int count, std::optional<int> percent);
    // "Screenshot · 12.5 MB of 300 MB", or the count of files for several.
    static QString body(int count, const QString &label, qint64 sent, qint64 total);
    // For the tooltip: "Uploading 42%".
    static QString activity(int count, std::optional<int> percent);
    // Whole per cent of `total`, or none while `total` is unknown.
    static std::optional<int> percent(qint64 sent, qint64 total);

private:
    struct Upload {
        QString label;
        qint64 sent = 0;
        qint64 total = 0;
    };

    void started(int id, const QString &label, qint64 total);
    void progressed(int id, qint64 sent, qint64 total);
    void ended(int id);
    void refresh();

    Notifier &m_notifier;
    std::function<void(const QString &)> m_setActivity;
    std::map<int, Upload> m_uploads;
    QTimer m_showTimer;
    bool m_shown = false;
    bool m_toastStands = false;
    // Since another notice took the progress notice's place.
    std::optional<QElapsedTimer> m_replacedAt;
};
