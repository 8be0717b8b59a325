#pragma once

#include "platform/SettingsView.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace clipwren {

// Keeps the names of the events, and may drop the view within one.
struct SettingsEvents : SettingsViewDelegate {
    std::vector<std::string> names;
    std::unique_ptr<SettingsView>* viewToDrop = nullptr;

    void enableClicked() override { note("enableClicked"); }
    void fpsChanged() override { note("fpsChanged"); }
    void resolutionChanged() override { note("resolutionChanged"); }
    void durationChanged() override { note("durationChanged"); }
    void launchAtLoginChanged() override { note("launchAtLoginChanged"); }
    void resetAllClicked() override { note("resetAllClicked"); }
    void windowWillClose() override { note("windowWillClose"); }

private:
    void note(const char* name) {
        names.emplace_back(name);
        if (viewToDrop) *viewToDrop = nullptr;
    }
};

// What every settings window does. `Subject` owns the maker and plays the user in the newest window, which is
// shown:
//   SettingsViews& views();
//   void choose(popup, index);  from the popup's list
//   void toggleLaunchAtLogin(); void clickEnable(); void clickReset(); void close();
//   void settle();              lets everything happen that is under way
template <typename Subject>
class SettingsViewConformance : public testing::Test {
protected:
    void SetUp() override {
        view = subject.views().makeSettingsView(content);
        ASSERT_TRUE(view);
        view->setDelegate(events);
        view->makeKeyAndOrderFront();
        subject.settle();
    }
    void TearDown() override {
        view = nullptr;
        subject.settle();
    }

    using Names = std::vector<std::string>;
    const SettingsContent content{
        .title = "Title",
        .heading = "Heading",
        .permissionsTitle = "ONE",
        .permissionLabel = "May",
        .enableTitle = "Ask",
        .recordingTitle = "TWO",
        .popups = {{"A", {"a0", "a1", "a2"}}, {"B", {"b0", "b1"}}, {"C", {"c0", "c1"}}},
        .generalTitle = "THREE",
        .launchAtLoginTitle = "Box",
        .aboutTitle = "FOUR",
        .resetTitle = "Reset"};
    Subject subject;
    std::shared_ptr<SettingsEvents> events = std::make_shared<SettingsEvents>();
    std::unique_ptr<SettingsView> view;
};
TYPED_TEST_SUITE_P(SettingsViewConformance);

TYPED_TEST_P(SettingsViewConformance, WhatTheProgramChangesIsNoEvent) {
    this->view->selectItem(SettingsPopup::fps, 2);
    this->view->selectItem(SettingsPopup::resolution, 1);
    this->view->selectItem(SettingsPopup::duration, 1);
    this->view->setLaunchAtLogin(true);
    this->view->setAboutText("About");
    this->view->setPermissionIcon("xmark.circle.fill", "Missing", SymbolTint::systemRed);
    this->view->setPermissionIcon("no.such.symbol", "", SymbolTint::systemGreen);
    this->view->setEnableButtonHidden(true);
    this->view->setEnableButtonHidden(false);
    this->subject.settle();
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::fps), 2);
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::resolution), 1);
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::duration), 1);
    EXPECT_TRUE(this->view->launchAtLogin());
    EXPECT_TRUE(this->events->names.empty());
}

TYPED_TEST_P(SettingsViewConformance, WhatTheUserDoesIsReportedOnce) {
    this->view->selectItem(SettingsPopup::fps, 0);
    this->view->selectItem(SettingsPopup::resolution, 0);
    this->view->selectItem(SettingsPopup::duration, 0);
    this->view->setLaunchAtLogin(false);
    this->subject.choose(SettingsPopup::fps, 2);
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::fps), 2);
    this->subject.choose(SettingsPopup::resolution, 1);
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::resolution), 1);
    this->subject.choose(SettingsPopup::duration, 1);
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::duration), 1);
    this->subject.toggleLaunchAtLogin();
    EXPECT_TRUE(this->view->launchAtLogin());
    this->subject.toggleLaunchAtLogin();
    EXPECT_FALSE(this->view->launchAtLogin());
    this->subject.clickEnable();
    this->subject.clickReset();
    this->subject.close();
    EXPECT_EQ(this->events->names,
              (std::vector<std::string>{"fpsChanged", "resolutionChanged", "durationChanged",
                                        "launchAtLoginChanged", "launchAtLoginChanged", "enableClicked",
                                        "resetAllClicked", "windowWillClose"}));
}

TYPED_TEST_P(SettingsViewConformance, AHiddenButtonCannotBeClicked) {
    this->view->setEnableButtonHidden(true);
    this->subject.clickEnable();
    EXPECT_TRUE(this->events->names.empty());
    this->view->setEnableButtonHidden(false);
    this->subject.clickEnable();
    EXPECT_EQ(this->events->names, std::vector<std::string>{"enableClicked"});
}

TYPED_TEST_P(SettingsViewConformance, MayEndWithinAnyOfItsEvents) {
    using User = void (*)(TypeParam&);
    for (const User user :
         {User([](TypeParam& s) { s.choose(SettingsPopup::fps, 1); }),
          User([](TypeParam& s) { s.toggleLaunchAtLogin(); }), User([](TypeParam& s) { s.clickEnable(); }),
          User([](TypeParam& s) { s.clickReset(); }), User([](TypeParam& s) { s.close(); })}) {
        this->SetUp();
        this->events->viewToDrop = &this->view;
        this->events->names.clear();
        user(this->subject);
        this->subject.settle();
        EXPECT_EQ(this->events->names.size(), 1u);
        EXPECT_EQ(this->view, nullptr);
    }
}

TYPED_TEST_P(SettingsViewConformance, WithoutADelegateNothingHappens) {
    this->events = nullptr;
    this->subject.choose(SettingsPopup::fps, 1);
    this->subject.toggleLaunchAtLogin();
    this->subject.clickEnable();
    this->subject.clickReset();
    this->subject.close();
    EXPECT_EQ(this->view->indexOfSelectedItem(SettingsPopup::fps), 1);
}

REGISTER_TYPED_TEST_SUITE_P(SettingsViewConformance, WhatTheProgramChangesIsNoEvent,
                            WhatTheUserDoesIsReportedOnce, AHiddenButtonCannotBeClicked,
                            MayEndWithinAnyOfItsEvents, WithoutADelegateNothingHappens);

} // namespace clipwren
