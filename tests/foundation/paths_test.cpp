#include "foundation/paths.h"

#include <QDir>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

TEST(Paths, HomeOverrideStandsInForTheHomeDirectory)
{
    const QByteArray saved = qgetenv("LEXICORN_HOME");
    qputenv("LEXICORN_HOME", "/tmp/somewhere");
    EXPECT_EQ(homeDirectory(), QStringLiteral("/tmp/somewhere"));
    EXPECT_EQ(dictDirectory(), QStringLiteral("/tmp/somewhere/Dict"));
    qputenv("LEXICORN_HOME", "");
    EXPECT_EQ(homeDirectory(), QDir::homePath());  // empty means unset
    qputenv("LEXICORN_HOME", saved);
}

}  // namespace
}  // namespace lexicorn
