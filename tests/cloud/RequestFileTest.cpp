#include "RequestFile.h"

#include <gtest/gtest.h>

using glimpso::tools::RequestFile;

TEST(RequestFile, ReadsMethodUrlHeadersAndBody)
{
    RequestFile file;
    ASSERT_TRUE(RequestFile::parse(
        "POST /a?x=1 HTTP/1.1\nHost:example.com\nContent-Type:text/plain\n\nParam1=value1", file));
    EXPECT_EQ(file.request.method, "POST");
    EXPECT_EQ(file.request.url.toEncoded(), "http://example.com/a?x=1");
    EXPECT_EQ(file.request.header("Content-Type"), "text/plain");
    EXPECT_EQ(file.body, "Param1=value1");
}

TEST(RequestFile, KeepsBlanksInsideTheTarget)
{
    RequestFile file;
    ASSERT_TRUE(RequestFile::parse("GET /example space/ HTTP/1.1\nHost:h", file));
    EXPECT_EQ(file.request.url.path(), "/example space/");
}

TEST(RequestFile, UnfoldsAContinuedHeaderWithOneBlank)
{
    RequestFile file;
    ASSERT_TRUE(RequestFile::parse("GET / HTTP/1.1\nHost:h\nMy-Header1:value1\n  value2\n     value3\n"
                                   "X-Amz-Date:20150830T123600Z",
        file));
    EXPECT_EQ(file.request.header("My-Header1"), "value1 value2 value3");
    EXPECT_EQ(file.request.header("X-Amz-Date"), "20150830T123600Z");
}

TEST(RequestFile, JoinsARepeatedHeader)
{
    RequestFile file;
    ASSERT_TRUE(RequestFile::parse("GET / HTTP/1.1\nHost:h\nMy-Header1:value2\nMy-Header1:value1", file));
    EXPECT_EQ(file.request.header("My-Header1"), "value2,value1");
}

TEST(RequestFile, RefusesTextWithoutRequestLine)
{
    RequestFile file;
    EXPECT_FALSE(RequestFile::parse("nonsense", file));
}
