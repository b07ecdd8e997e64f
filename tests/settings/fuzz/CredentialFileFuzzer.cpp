// libFuzzer target for the decoder of "cloud-credentials.json", a file a
// person may edit by hand: whatever bytes come in, they must not crash, and
// what decodes must come back unchanged through the file's own writing.
#include "settings/CredentialFile.h"

#include <QByteArray>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto credentials = CredentialFile::decode(bytes);
    if (!credentials)
        return 0;
    const auto again = CredentialFile::decode(CredentialFile::encode(*credentials));
    if (!again || !(*again == *credentials))
        std::abort();
    return 0;
}
