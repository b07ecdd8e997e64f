#include "appbase/CaptureKind.h"

namespace CaptureKinds {

QString rawValue(CaptureKind kind)
{
    switch (kind) {
    case CaptureKind::image:
        return QStringLiteral("image");
    case CaptureKind::text:
        return QStringLiteral("text");
    case CaptureKind::gif:
        return QStringLiteral("gif");
    case CaptureKind::video:
        return QStringLiteral("video");
    }
    return {};
}

std::optional<CaptureKind> fromRawValue(const QString &text)
{
    for (CaptureKind kind : all) {
        if (rawValue(kind) == text)
            return kind;
    }
    return std::nullopt;
}

QStringList fileExtensions(CaptureKind kind)
{
    switch (kind) {
    case CaptureKind::image:
        return {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"), QStringLiteral("heic")};
    case CaptureKind::text:
        return {};
    case CaptureKind::gif:
        return {QStringLiteral("gif")};
    case CaptureKind::video:
        return {QStringLiteral("mp4"), QStringLiteral("mov")};
    }
    return {};
}

std::optional<CaptureKind> of(const QString &fileExtension)
{
    const QString extension = fileExtension.toLower();
    for (CaptureKind kind : all) {
        if (fileExtensions(kind).contains(extension))
            return kind;
    }
    return std::nullopt;
}

} // namespace CaptureKinds
