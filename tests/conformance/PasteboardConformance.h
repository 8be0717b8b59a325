#pragma once

#include "platform/Pasteboard.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {

// What every pasteboard does. `Subject` owns an empty one:
//   Pasteboard& pasteboard();
//   std::vector<path> files();  the files on the clipboard, as another program reads them
template <typename Subject>
class PasteboardConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(PasteboardConformance);

TYPED_TEST_P(PasteboardConformance, HoldsExactlyTheOneFile) {
    for (const std::filesystem::path file : {"/tmp/a.gif", "/tmp/100% ü/b #1.gif"}) {
        this->subject.pasteboard().clearContents();
        EXPECT_TRUE(this->subject.pasteboard().writeFileURL(file));
        EXPECT_EQ(this->subject.files(), std::vector{file});
    }
}

TYPED_TEST_P(PasteboardConformance, HoldsNothingOnceCleared) {
    EXPECT_TRUE(this->subject.pasteboard().writeFileURL("/tmp/a.gif"));
    this->subject.pasteboard().clearContents();
    EXPECT_EQ(this->subject.files(), std::vector<std::filesystem::path>{});
    this->subject.pasteboard().clearContents();
    EXPECT_TRUE(this->subject.pasteboard().writeFileURL("/tmp/b.gif"));
    EXPECT_EQ(this->subject.files(), std::vector<std::filesystem::path>{"/tmp/b.gif"});
}

REGISTER_TYPED_TEST_SUITE_P(PasteboardConformance, HoldsExactlyTheOneFile, HoldsNothingOnceCleared);

} // namespace clipwren
