#include "tests/conformance/SettingsViewConformance.h"
#include "tests/fakes/FakeSettingsView.h"

namespace clipwren {

struct FakeSettingsViewSubject {
    FakeSettingsViews fake;

    SettingsViews& views() { return fake; }
    FakeSettingsViewState& user() { return *fake.made.back(); }
    void choose(SettingsPopup popup, int index) { user().choose(popup, index); }
    void toggleLaunchAtLogin() { user().switchLaunchAtLogin(!user().isLaunchAtLoginOn); }
    void clickEnable() { user().clickEnable(); }
    void clickReset() { user().clickReset(); }
    void close() { user().close(); }
    void settle() {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SettingsViewConformance, FakeSettingsViewSubject);

} // namespace clipwren
