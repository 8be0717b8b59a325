#include "platform/linux/status/MenuLayout.h"

#include <gtest/gtest.h>

namespace clipwren {

namespace {

Menu makeMenu() {
    return {{{.title = "Record Region  (⌘⇧G)"},
             {.isSeparator = true},
             {.title = "A_b", .showsImage = false},
             {.title = "Quit Clipwren", .keyEquivalent = "q"}}};
}

QList<int> idsOf(const QList<MenuItemProperties>& items) {
    QList<int> ids;
    for (const MenuItemProperties& item : items)
        ids.append(item.id);
    return ids;
}

TEST(MenuLayout, NumbersTheLinesFromOne) {
    const Menu menu = makeMenu();
    const auto root = menuLayout(&menu, 0, -1, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->id, 0);
    EXPECT_EQ(root->properties,
              (QVariantMap{{QStringLiteral("children-display"), QStringLiteral("submenu")}}));
    ASSERT_EQ(root->children.size(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(root->children[i].id, i + 1);
    EXPECT_EQ(menuItem(&menu, 4)->title, "Quit Clipwren");
    EXPECT_EQ(menuItem(&menu, 0), nullptr);
    EXPECT_EQ(menuItem(&menu, 5), nullptr);
    EXPECT_EQ(menuItem(&menu, -1), nullptr);
}

TEST(MenuLayout, TellsLabelsSeparatorsAndShortcuts) {
    const Menu menu = makeMenu();
    const auto root = menuLayout(&menu, 0, -1, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->children[0].properties,
              (QVariantMap{{QStringLiteral("label"), QStringLiteral("Record Region  (⌘⇧G)")}}));
    EXPECT_EQ(root->children[1].properties,
              (QVariantMap{{QStringLiteral("type"), QStringLiteral("separator")}}));
    EXPECT_EQ(root->children[2].properties, (QVariantMap{{QStringLiteral("label"), QStringLiteral("A__b")}}))
        << "no mnemonic, no icon";
    EXPECT_EQ(root->children[3].properties.value(QStringLiteral("label")), QStringLiteral("Quit Clipwren"));
    EXPECT_EQ(root->children[3].properties.value(QStringLiteral("shortcut")).value<QList<QStringList>>(),
              (QList<QStringList>{{QStringLiteral("Control"), QStringLiteral("q")}}));
}

TEST(MenuLayout, GoesNoDeeperThanAsked) {
    const Menu menu = makeMenu();
    EXPECT_TRUE(menuLayout(&menu, 0, 0, {})->children.isEmpty());
    EXPECT_EQ(menuLayout(&menu, 0, 1, {})->children.size(), 4);
    const auto line = menuLayout(&menu, 4, -1, {});
    ASSERT_TRUE(line);
    EXPECT_EQ(line->id, 4);
    EXPECT_TRUE(line->children.isEmpty());
    EXPECT_FALSE(menuLayout(&menu, 5, -1, {}));
    EXPECT_FALSE(menuLayout(&menu, -1, -1, {}));
}

TEST(MenuLayout, TellsOnlyThePropertiesAskedFor) {
    const Menu menu = makeMenu();
    const auto root = menuLayout(&menu, 0, -1, {QStringLiteral("label")});
    EXPECT_TRUE(root->properties.isEmpty());
    EXPECT_EQ(root->children[3].properties.keys(), QStringList{QStringLiteral("label")});
    EXPECT_TRUE(root->children[1].properties.isEmpty());
}

TEST(MenuLayout, WithoutAMenuThereIsOnlyTheRoot) {
    const auto root = menuLayout(nullptr, 0, -1, {});
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->children.isEmpty());
    EXPECT_FALSE(menuLayout(nullptr, 1, -1, {}));
    EXPECT_EQ(idsOf(menuProperties(nullptr, {}, {})), QList<int>{0});
    EXPECT_EQ(menuItem(nullptr, 1), nullptr);
}

TEST(MenuLayout, GivesThePropertiesOfKnownLines) {
    const Menu menu = makeMenu();
    EXPECT_EQ(idsOf(menuProperties(&menu, {}, {})), (QList<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(idsOf(menuProperties(&menu, {4, 9, 2}, {})), (QList<int>{4, 2}));
}

} // namespace

} // namespace clipwren
