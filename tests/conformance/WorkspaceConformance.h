#pragma once

#include "platform/Workspace.h"

#include <gtest/gtest.h>

namespace clipwren {

// What every workspace does. `Subject` owns one:
//   Workspace& workspace();
//   std::vector<path> shown(count);  that many folders that the file browser was told to show, waited for
template <typename Subject>
class WorkspaceConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(WorkspaceConformance);

TYPED_TEST_P(WorkspaceConformance, ShowsTheFolder) {
    const std::vector<std::filesystem::path> folders{"/tmp/a b/Clipwren", "/tmp/100% ü"};
    for (const auto& folder : folders)
        this->subject.workspace().openFolder(folder);
    EXPECT_EQ(this->subject.shown(2), folders);
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceConformance, ShowsTheFolder);

} // namespace clipwren
