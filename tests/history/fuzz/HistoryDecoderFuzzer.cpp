// libFuzzer target for the decoders of "text.json" and the old "history.json":
// whatever bytes come in, they must not crash, and whatever they decode to
// must come back unchanged through the store's own writing and reading.
#include "history/HistoryItem.h"
#include "history/OldHistoryItem.h"

#include <QByteArray>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));

    const QList<HistoryItem> items = HistoryItem::decodeList(bytes);
    const QList<HistoryItem> again = HistoryItem::decodeList(HistoryItem::encodeList(items));
    if (again != items)
        std::abort();
    for (const HistoryItem &item : items) {
        // What decodes has its required parts.
        if (!item.date.isValid() || !CaptureKinds::fromRawValue(CaptureKinds::rawValue(item.kind)))
            std::abort();
    }

    const auto oldItems = OldHistoryItem::decodeList(bytes);
    if (oldItems) {
        for (const OldHistoryItem &old : *oldItems) {
            if (!old.date.isValid())
                std::abort();
        }
    }
    return 0;
}
