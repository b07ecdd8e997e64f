#include "app/UploadIndicator.h"

#include "cloud/UploadService.h"
#include "output/Notifier.h"

#include <QLocale>

namespace {

// Stands until the last upload ends or another notice takes its place.
constexpr double progressSeconds = 24 * 3600;

QString size(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace

UploadIndicator::UploadIndicator(UploadService &uploads, Notifier &notifier,
                                 std::function<void(const QString &)> setActivity, int showAfterMs, QObject *parent)
    : QObject(parent)
    , m_notifier(notifier)
    , m_setActivity(std::move(setActivity))
{
    m_showTimer.setSingleShot(true);
    m_showTimer.setInterval(showAfterMs);
    connect(&m_showTimer, &QTimer::timeout, this, [this] {
        if (m_uploads.empty())
            return;
        m_shown = true;
        refresh();
    });
    connect(&uploads, &UploadService::uploadStarted, this, &UploadIndicator::started);
    connect(&uploads, &UploadService::uploadProgressed, this, &UploadIndicator::progressed);
    connect(&uploads, &UploadService::uploadEnded, this, &UploadIndicator::ended);
}

std::optional<int> UploadIndicator::percent(qint64 sent, qint64 total)
{
    if (total <= 0)
        return std::nullopt;
    return int(std::clamp<qint64>(sent * 100 / total, 0, 100));
}

QString UploadIndicator::title(int count, std::optional<int> percent)
{
    const QString what = count > 1 ? QStringLiteral("Uploading %1 files…").arg(count) : QStringLiteral("Uploading…");
    return percent ? what + QStringLiteral(" %1%").arg(*percent) : what;
}

QString UploadIndicator::body(int count, const QString &label, qint64 sent, qint64 total)
{
    const QString what = count > 1 ? QStringLiteral("%1 files").arg(count) : label;
    if (total <= 0)
        return what;
    return QStringLiteral("%1 · %2 of %3").arg(what, size(sent), size(total));
}

QString UploadIndicator::activity(int count, std::optional<int> percent)
{
    QString text = count > 1 ? QStringLiteral("Uploading %1 files").arg(count) : QStringLiteral("Uploading");
    if (percent)
        text += QStringLiteral(" %1%").arg(*percent);
    return text;
}

void UploadIndicator::started(int id, const QString &label, qint64 total)
{
    m_uploads[id] = Upload{label, 0, total};
    if (m_shown)
        refresh();
    else if (!m_showTimer.isActive())
        m_showTimer.start();
}

void UploadIndicator::progressed(int id, qint64 sent, qint64 total)
{
    const auto it = m_uploads.find(id);
    if (it == m_uploads.end())
        return;
    it->second.sent = sent;
    it->second.total = total;
    if (m_shown)
        refresh();
}

void UploadIndicator::ended(int id)
{
    m_uploads.erase(id);
    if (!m_uploads.empty()) {
        if (m_shown)
            refresh();
        return;
    }
    m_showTimer.stop();
    if (m_toastStands && m_notifier.showingProgress())
        m_notifier.clearProgress();
    if (m_shown && m_setActivity)
        m_setActivity(QString());
    m_shown = false;
    m_toastStands = false;
    m_replacedAt.reset();
}

void UploadIndicator::refresh()
{
    qint64 sent = 0;
    qint64 total = 0;
    bool sizesKnown = true;
    for (const auto &[id, upload] : m_uploads) {
        sent += upload.sent;
        total += upload.total;
        sizesKnown = sizesKnown && upload.total > 0;
    }
    const int count = int(m_uploads.size());
    const std::optional<int> share = sizesKnown ? percent(sent, total) : std::nullopt;
    const QString label = m_uploads.empty() ? QString() : m_uploads.begin()->second.label;
    if (m_setActivity)
        m_setActivity(activity(count, share));

    // Another notice (the first of two uploads done) took the progress
    // notice's place: it stands a while before the progress comes back.
    if (m_toastStands && !m_notifier.showingProgress()) {
        m_toastStands = false;
        m_replacedAt.emplace();
        m_replacedAt->start();
    }
    if (m_replacedAt && m_replacedAt->elapsed() < noticeStandsMs)
        return;
    m_replacedAt.reset();
    m_notifier.changeProgress(title(count, share), body(count, label, sizesKnown ? sent : 0, sizesKnown ? total : 0),
                              progressSeconds);
    m_toastStands = true;
}
