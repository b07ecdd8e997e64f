#pragma once

#include "cloud/HttpRequest.h"

#include <QByteArray>

namespace glimpso::tools {

// An HTTP request written out as text, the form the AWS signing test suite
// uses for its ".req" files: a request line, header lines, and after a blank
// line the body.
struct RequestFile
{
    cloud::HttpRequest request;
    QByteArray body;

    // Parses the text. The URL is "http://" + the Host header + the target of
    // the request line. A repeated header joins the first, comma-separated; a
    // line that starts with a blank or tab continues the previous header and
    // is joined with one blank, as HTTP unfolds folded lines.
    // Returns false when there is no request line.
    static bool parse(const QByteArray &text, RequestFile &out);
};

} // namespace glimpso::tools
