#include "videowriting/WriterLog.h"

#include <atomic>

namespace videowriting {

namespace {
std::atomic<WriterLog::Handler> handler = nullptr;

void send(WriterLog::Level level, const std::string &message)
{
    if (const WriterLog::Handler h = handler.load())
        h(level, message.c_str());
}
} // namespace

void WriterLog::setHandler(Handler h)
{
    handler = h;
}

void WriterLog::info(const std::string &message)
{
    send(Level::info, message);
}

void WriterLog::error(const std::string &message)
{
    send(Level::error, message);
}

} // namespace videowriting
