// Where menus lie, against tables worked out by expected_geometry.py.

#include <array>
#include <cstddef>
#include <ostream>

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;

namespace {

// An item: bottom left x and y, top right x and y.
using Corners = std::array<int, 4>;

// What an item takes: where a click on it starts to count, and the corners of its highlight. In a
// list within a list the highlight, too, starts where clicks do.
struct Area {
    int hit_left;
    int left, y0, right, y1;
};

struct ExpectedMenu {
    float x, y;
    int width, height, item_width;
    std::vector<Corners> items;
    std::vector<Area> areas;
};

struct ExpectedScreen {
    int width, height;
    int bar_width;
    std::array<int, 2> reported;
    std::array<int, 2> first_drop, first_nested;
    ExpectedMenu bar, drop, nested;
};

// A list that is the root, and its submenu; a new submenu belongs at `first_child`.
struct ExpectedList {
    int width, height;
    std::array<int, 2> first_child;
    ExpectedMenu root, child;
};

void PrintTo(const ExpectedList& list, std::ostream* out) {
    *out << list.width << "x" << list.height;
}

void PrintTo(const ExpectedScreen& screen, std::ostream* out) {
    *out << screen.width << "x" << screen.height;
}

#include "tests/glutmenu/expected_geometry.inc"

Corners cornersOf(const CGlutMenu& menu, int i) {
    Corners at{};
    menu.GetBottomLeft(i, at[0], at[1]);
    const float top = static_cast<float>(at[1]) - GlutMenu::char_height;
    menu.GetTopRight(i, at[2], at[3], static_cast<int>(top));
    return at;
}

void expectMenu(const CGlutMenu& menu, const ExpectedMenu& expected) {
    EXPECT_EQ(menu.x, expected.x);
    EXPECT_EQ(menu.y, expected.y);
    EXPECT_EQ(menu.width, expected.width);
    EXPECT_EQ(menu.height, expected.height);
    EXPECT_EQ(menu.item_width, expected.item_width);
    for (std::size_t i = 0; i < expected.items.size(); ++i) {
        EXPECT_EQ(cornersOf(menu, static_cast<int>(i)), expected.items[i]) << "item " << i;
    }
}

std::array<int, 2> positionOf(const CGlutMenu& menu) {
    return {static_cast<int>(menu.x), static_cast<int>(menu.y)};
}

class Geometry : public ToolkitTest, public testing::WithParamInterface<ExpectedScreen> {
  protected:
    void addSubMenus() {
        bar.AddSubMenu(2, {"Open", "Recent fractals", "Quit"}, nullptr, nullptr, "");
        drop = bar.GetSubMenu(2);
        drop->AddSubMenu(1, {"One", "Another one"}, nullptr, nullptr, "");
        nested = drop->GetSubMenu(1);
    }

    void expectScreen(const ExpectedScreen& expected) {
        EXPECT_EQ(positionOf(*drop), expected.first_drop);
        EXPECT_EQ(positionOf(*nested), expected.first_nested);
        bar.Resize(1.0F, 1.0F);
        expectMenu(bar, expected.bar);
        EXPECT_EQ(bar.bar_width, expected.bar_width);
        expectMenu(*drop, expected.drop);
        expectMenu(*nested, expected.nested);
    }

    CGlutMenu bar;
    CGlutMenu* drop = nullptr;
    CGlutMenu* nested = nullptr;
    const Strings items = {"File", "Palette", "Zoom", "Devices"};
};

class InitialisedGeometry : public Geometry {};

TEST_P(InitialisedGeometry, matches_the_table) {
    initialiseBar(bar, items, GetParam().width, GetParam().height);
    addSubMenus();
    expectScreen(GetParam());
}

TEST_P(InitialisedGeometry, of_a_bar_is_reported_with_the_height_shrunk_by_the_font) {
    initialiseBar(bar, items, GetParam().width, GetParam().height);
    std::array<int, 2> size{};
    EXPECT_EQ(bar.GetWidthAndHeight(size[0], size[1]), GetParam().reported[1]);
    EXPECT_EQ(size, GetParam().reported);
}

INSTANTIATE_TEST_SUITE_P(Screens, InitialisedGeometry, testing::ValuesIn(initialised_screens));

class ReshapedGeometry : public Geometry {};

TEST_P(ReshapedGeometry, matches_the_table) {
    initialiseBar(bar, items);
    bar.ReshapeCallback(GetParam().width, GetParam().height);
    addSubMenus();
    expectScreen(GetParam());
}

TEST_P(ReshapedGeometry, is_the_same_for_submenus_added_before) {
    initialiseBar(bar, items);
    addSubMenus();
    bar.ReshapeCallback(GetParam().width, GetParam().height);
    expectMenu(bar, GetParam().bar);
    expectMenu(*drop, GetParam().drop);
    expectMenu(*nested, GetParam().nested);
}

INSTANTIATE_TEST_SUITE_P(Screens, ReshapedGeometry, testing::ValuesIn(reshaped_screens));

class ListRoot : public ToolkitTest, public testing::WithParamInterface<ExpectedList> {
  protected:
    ListRoot() {
        initialiseList(root, {"Grid", "More of them", "Axes"});
        add();
    }
    void add() {
        root.AddSubMenu(1, {"One", "Another one"}, nullptr, nullptr, "");
        child = root.GetSubMenu(1);
    }
    void reshape() { root.ReshapeCallback(GetParam().width, GetParam().height); }

    CGlutMenu root;
    CGlutMenu* child = nullptr;
};

TEST_P(ListRoot, is_moved_and_scaled_with_its_submenu_when_the_window_is_reshaped) {
    reshape();
    expectMenu(root, GetParam().root);
    expectMenu(*child, GetParam().child);
}

TEST_P(ListRoot, puts_a_new_submenu_beside_it) {
    reshape();
    add();
    EXPECT_EQ(positionOf(*child), GetParam().first_child);
}

INSTANTIATE_TEST_SUITE_P(Screens, ListRoot, testing::ValuesIn(reshaped_lists));

// Where the highlight of each item of a menu is drawn, with the menu open.
class Highlight : public ToolkitTest {
  protected:
    static void expectHighlights(CGlutMenu& root, CGlutMenu& menu, std::size_t quad,
                                 const ExpectedMenu& expected, bool is_nested) {
        for (std::size_t i = 0; i < expected.areas.size(); ++i) {
            SCOPED_TRACE("item " + std::to_string(i));
            menu.highlighted_item = static_cast<int>(i);
            const auto quads = shapes(draw(root), GL_QUADS);
            ASSERT_GT(quads.size(), quad);
            const Area& area = expected.areas[i];
            const auto left = static_cast<float>(is_nested ? area.hit_left : area.left);
            EXPECT_EQ(quads[quad].points[0], (stand_in::Point{left, static_cast<float>(area.y0)}));
            EXPECT_EQ(quads[quad].points[2], (stand_in::Point{static_cast<float>(area.right),
                                                              static_cast<float>(area.y1)}));
        }
    }
    static void open(CGlutMenu& menu, int i) {
        menu.active = menu.submenu_open = true;
        menu.selected_item = i;
        menu.GetSubMenu(i)->Activate();
    }
};

class BarHighlight : public Highlight, public testing::WithParamInterface<ExpectedScreen> {};

TEST_P(BarHighlight, lies_where_the_table_says) {
    CGlutMenu bar;
    initialiseBar(bar, {"File", "Palette", "Zoom", "Devices"});
    bar.AddSubMenu(2, {"Open", "Recent fractals", "Quit"}, nullptr, nullptr, "");
    bar.ReshapeCallback(GetParam().width, GetParam().height);
    bar.Activate();
    expectHighlights(bar, bar, 1, GetParam().bar, false);
    open(bar, 2);
    expectHighlights(bar, *bar.GetSubMenu(2), 1, GetParam().drop, false);
}

TEST_P(BarHighlight, is_where_clicks_count_and_a_margin_left_of_it) {
    CGlutMenu bar;
    initialiseBar(bar, {"File", "Palette", "Zoom", "Devices"});
    stand_in::state.window_width = GetParam().width;
    stand_in::state.window_height = GetParam().height;
    bar.ReshapeCallback(GetParam().width, GetParam().height);
    bar.Activate();
    trace();
    // Between these two lies a gap; the first two items have none.
    const Area& zoom = GetParam().bar.areas[2];
    const Area& devices = GetParam().bar.areas[3];
    EXPECT_TRUE(click(bar, zoom.right, 5));
    EXPECT_EQ(trace(), "Item Zoom\n");
    EXPECT_FALSE(click(bar, devices.hit_left - 1, 5));
    EXPECT_TRUE(click(bar, devices.hit_left, 5));
    EXPECT_TRUE(click(bar, devices.right, 5));
    EXPECT_FALSE(click(bar, devices.right + 1, 5));
    EXPECT_EQ(trace(), "Item Devices\nItem Devices\n");
}

INSTANTIATE_TEST_SUITE_P(Screens, BarHighlight, testing::ValuesIn(reshaped_screens));

class ListHighlight : public Highlight, public testing::WithParamInterface<ExpectedList> {};

TEST_P(ListHighlight, lies_where_the_table_says) {
    CGlutMenu root;
    initialiseList(root, {"Grid", "More of them", "Axes"});
    root.AddSubMenu(1, {"One", "Another one"}, nullptr, nullptr, "");
    root.ReshapeCallback(GetParam().width, GetParam().height);
    root.Activate();
    expectHighlights(root, root, 1, GetParam().root, false);
    open(root, 1);
    expectHighlights(root, *root.GetSubMenu(1), 1, GetParam().child, true);
}

INSTANTIATE_TEST_SUITE_P(Screens, ListHighlight, testing::ValuesIn(reshaped_lists));

}  // namespace
