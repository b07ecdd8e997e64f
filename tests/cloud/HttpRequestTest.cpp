#include "cloud/HttpRequest.h"

#include <gtest/gtest.h>

using glimpso::cloud::HttpRequest;

TEST(HttpRequest, FindsAHeaderWhateverItsCase)
{
    HttpRequest request;
    request.setHeader("Content-Type", "image/png");
    EXPECT_TRUE(request.hasHeader("content-type"));
    EXPECT_EQ(request.header("CONTENT-TYPE"), "image/png");
    EXPECT_FALSE(request.hasHeader("Content-Length"));
    EXPECT_EQ(request.header("Content-Length"), "");
}

TEST(HttpRequest, ReplacesAValueAndKeepsTheFirstSpelling)
{
    HttpRequest request;
    request.setHeader("X-Amz-Date", "1");
    request.setHeader("x-amz-date", "2");
    ASSERT_EQ(request.headers.size(), 1);
    EXPECT_EQ(request.headers.first().name, "X-Amz-Date");
    EXPECT_EQ(request.headers.first().value, "2");
}

TEST(HttpRequest, JoinsARepeatedHeaderWithACommaInOrder)
{
    HttpRequest request;
    request.addHeader("My-Header1", "value4");
    request.addHeader("my-header1", "value1");
    request.addHeader("My-Header2", "x");
    ASSERT_EQ(request.headers.size(), 2);
    EXPECT_EQ(request.header("My-Header1"), "value4,value1");
}

TEST(HttpRequest, KeepsHeadersInTheOrderTheyWereSet)
{
    HttpRequest request;
    request.setHeader("b", "1");
    request.setHeader("a", "2");
    EXPECT_EQ(request.headers.at(0).name, "b");
    EXPECT_EQ(request.headers.at(1).name, "a");
}
