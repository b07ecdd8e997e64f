#include "appbase/InProcessNotices.h"

InProcessNotices &InProcessNotices::instance()
{
    static InProcessNotices centre;
    return centre;
}
