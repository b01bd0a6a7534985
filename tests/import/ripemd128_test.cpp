// RIPEMD-128 against the test vectors its authors published.

#include "lexicorn/dictionary/import/ripemd128.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <string>

namespace lexicorn {
namespace {

std::string repeated(const std::string& piece, int times)
{
    std::string whole;
    for (int i = 0; i < times; ++i)
        whole += piece;
    return whole;
}

TEST(Ripemd128, PublishedTestVectors)
{
    const struct {
        std::string message;
        const char* digest;
    } vectors[] = {
        {"", "cdf26213a150dc3ecb610f18f6b38b46"},
        {"a", "86be7afa339d0fc7cfc785e72f578d33"},
        {"abc", "c14a12199c66e4ba84636b0f69144c77"},
        {"message digest", "9e327b3d6e523062afc1132d7df9d1b8"},
        {"abcdefghijklmnopqrstuvwxyz", "fd2aa607f71dc8f510714922b371834e"},
        // 56 bytes: the length no longer fits the last block, padding takes another.
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "a1aa0689d0fafa2ddc22e88b49133a06"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d1e959eb179c911faea4624c60c5c702"},
        {repeated("1234567890", 8), "3f45ef194732c2dbb2c4a2c769795fa3"},
        {std::string(1000000, 'a'), "4a7f5723f954eba1216c9d8f6320431f"},
    };
    for (const auto& v : vectors) {
        const dictimport::Ripemd128Digest digest = dictimport::ripemd128(v.message.data(), v.message.size());
        const QByteArray hex = QByteArray(reinterpret_cast<const char*>(digest.data()), qsizetype(digest.size())).toHex();
        EXPECT_EQ(hex.toStdString(), v.digest) << "message of " << v.message.size() << " bytes: " << v.message.substr(0, 60);
    }
}

}  // namespace
}  // namespace lexicorn
