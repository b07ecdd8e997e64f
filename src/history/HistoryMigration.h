#pragma once

#include "history/HistoryItem.h"
#include "history/OldHistoryItem.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// An earlier version kept copies of its captures in "{support}/History/" with
// an index "history.json". This moves those copies into the save folder under
// the names of today's captures and turns the old texts into text items; the
// old folder is then removed, whether that worked or not, so it is tried once.
namespace HistoryMigration {

// The name an old copy gets: "glimpso-{date}.png", or "glimpso-{date}-{n}.png"
// with n from 2 when that name is taken in the save folder. The date is
// local time, "yyyy-MM-dd-HHmmss", as the save names of captures are.
QString freeName(const QString &saveFolder, const QDateTime &date);

// Nothing happens (and absent comes back) without "History/history.json".
// Otherwise the old folder is gone afterwards; if its index could be read, the
// text items it held come back, in the index's order.
std::optional<QList<HistoryItem>> migrateCopies(const QString &supportFolder, const QString &saveFolder);

} // namespace HistoryMigration
