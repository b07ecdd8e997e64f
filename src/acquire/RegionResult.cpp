#include "acquire/RegionResult.h"

static QString rectText(const QRectF &r)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
}

QString RegionResult::description() const
{
    if (const auto *s = std::get_if<Selected>(&value))
        return QStringLiteral("selected %1 %2 on %3 display(s), %4 annotation(s)")
            .arg(s->action.description(), rectText(s->rect))
            .arg(s->snapshots.size())
            .arg(s->annotations.size());
    if (const auto *a = std::get_if<Area>(&value))
        return QStringLiteral("area %1 on %2 display(s)").arg(rectText(a->rect)).arg(a->snapshots.size());
    return QStringLiteral("cancelled");
}
