#include "ZkTools/Internet.h"

#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <cpprest/base_uri.h>

namespace {

TEST(GetProxyForUrl, AnswersNothingWithoutAnAutoConfigurationFile) {
    EXPECT_EQ(sGetProxyForUrl(L"", web::uri(L"http://example.org/")), L"");
}

} // namespace
