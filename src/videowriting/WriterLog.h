#pragma once

#include <string>

namespace videowriting {

// Where the writer's few log lines go. The application routes them into its
// own log; without a handler they are dropped.
namespace WriterLog {
enum class Level { info, error };
using Handler = void (*)(Level level, const char *message);

void setHandler(Handler handler);
void info(const std::string &message);
void error(const std::string &message);
} // namespace WriterLog

} // namespace videowriting
