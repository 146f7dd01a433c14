// What a menu draws, call by call where the order matters.

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;
using stand_in::Colour;
using stand_in::Drawn;
using stand_in::Point;
using testing::ElementsAre;

namespace {

using Points = std::vector<Point>;

constexpr Colour white{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Colour blue{0.0F, 0.0F, 1.0F, 0.7F};
constexpr Colour yellow{0.8F, 0.8F, 0.0F, 0.7F};

Points box(float x0, float y0, float x1, float y1) {
    return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

class Helpers : public ToolkitTest {};

TEST_F(Helpers, set_up_a_projection_whose_y_grows_downwards) {
    CGlutMenu::setOrthographicProjection();
    EXPECT_THAT(
        stand_in::state.calls,
        ElementsAre("glPushMatrix", "glLoadIdentity",
                    "glMatrixMode " + std::to_string(GL_PROJECTION), "glPushMatrix",
                    "glLoadIdentity", "gluOrtho2D 0 1024 0 768", "glScalef 1 -1 1",
                    "glTranslatef 0 -768 0", "glMatrixMode " + std::to_string(GL_MODELVIEW)));
}

TEST_F(Helpers, take_the_projection_down_again) {
    CGlutMenu::restorePersectionProjection();
    EXPECT_THAT(stand_in::state.calls,
                ElementsAre("glMatrixMode " + std::to_string(GL_PROJECTION), "glPopMatrix",
                            "glMatrixMode " + std::to_string(GL_MODELVIEW), "glPopMatrix"));
}

TEST_F(Helpers, draw_a_filled_box_corner_by_corner) {
    CGlutMenu::renderQuad(1.0F, 2.0F, 3.0F, 4.0F);
    EXPECT_THAT(stand_in::state.calls,
                ElementsAre("glBegin " + std::to_string(GL_QUADS), "glVertex3f 1 2 0",
                            "glVertex3f 3 2 0", "glVertex3f 3 4 0", "glVertex3f 1 4 0", "glEnd"));
}

TEST_F(Helpers, draw_an_outline_through_the_same_corners) {
    CGlutMenu::renderSquare(1.0F, 2.0F, 3.0F, 4.0F);
    const auto loops = shapes(stand_in::state.drawn, GL_LINE_LOOP);
    ASSERT_EQ(loops.size(), 1U);
    EXPECT_EQ(loops[0].points, box(1.0F, 2.0F, 3.0F, 4.0F));
}

TEST_F(Helpers, draw_a_vertical_line) {
    CGlutMenu::renderLine(1.0F, 2.0F, 3.0F);
    const auto lines = shapes(stand_in::state.drawn, GL_LINES);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].points, (Points{{1.0F, 2.0F}, {1.0F, 3.0F}}));
}

TEST_F(Helpers, draw_text_upright_with_strokes_of_two_and_restore_the_line_width) {
    stand_in::state.line_width = 3.5F;
    CGlutMenu::renderBitmapString(10.0F, 20.0F, 0.0F, nullptr, "Hi");
    const Drawn text = textOf(stand_in::state.drawn, "Hi");
    EXPECT_EQ(text.points, (Points{{10.0F, 20.0F}}));
    EXPECT_FLOAT_EQ(text.glyph_scale[0], 13.0F / 89.0F);
    EXPECT_FLOAT_EQ(text.glyph_scale[1], -0.30003F);
    EXPECT_EQ(text.line_width, 2.0F);
    EXPECT_EQ(stand_in::state.line_width, 3.5F);
    EXPECT_THAT(stand_in::state.calls,
                ElementsAre("glPushMatrix", "glLineWidth 2", "glTranslatef 10 20 0",
                            "glScalef 0.146067 -0.30003 1", "glutStrokeCharacter Roman",
                            "glPopMatrix", "glLineWidth 3.5"));
}

TEST_F(Helpers, draw_text_with_the_roman_font_whatever_font_they_are_given) {
    CGlutMenu::renderBitmapString(10.0F, 20.0F, 5.0F, GlutMenu::font, "H");
    EXPECT_THAT(stand_in::state.calls, testing::Contains("glutStrokeCharacter Roman"));
    EXPECT_THAT(stand_in::state.calls, testing::Contains("glTranslatef 10 20 5"));
    stand_in::state.off_the_plane = 0;  // as it was asked to be
}

class Rendering : public ToolkitTest {
  protected:
    Rendering() {
        initialiseBar(bar, {"File", "View"});
        bar.AddSubMenu(0, {"Open", "Recent", "Quit"}, nullptr, nullptr, "");
        drop = bar.GetSubMenu(0);
        drop->AddSubMenu(1, {"One", "Two"}, nullptr, nullptr, "");
        nested = drop->GetSubMenu(1);
        bar.Resize(1.0F, 1.0F);
        bar.Activate();
    }

    void openDrop() { bar.keyboard_callback(return_key); }
    void openNested() {
        openDrop();
        bar.keyboard_callback(arrow_down);
        bar.keyboard_callback(arrow_right);
    }

    CGlutMenu bar;
    CGlutMenu* drop = nullptr;
    CGlutMenu* nested = nullptr;
};

TEST_F(Rendering, of_an_inactive_root_draws_nothing) {
    bar.Deactive(false);
    EXPECT_TRUE(draw(bar).empty());
}

TEST_F(Rendering, blends_without_depth_test_and_ends_with_depth_test_and_no_blending) {
    draw(bar);
    const auto& calls = stand_in::state.calls;
    const auto blend_function = "glBlendFunc " + std::to_string(GL_SRC_ALPHA) + " " +
                                std::to_string(GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_EQ(calls[9], "glDisable " + std::to_string(GL_DEPTH_TEST));
    EXPECT_EQ(calls[10], "glEnable " + std::to_string(GL_BLEND));
    EXPECT_EQ(calls[11], blend_function);
    EXPECT_FALSE(stand_in::state.blending);
    EXPECT_TRUE(stand_in::state.depth_test);
}

TEST_F(Rendering, takes_blending_depth_test_and_projection_back_in_this_order) {
    draw(bar);
    const auto& calls = stand_in::state.calls;
    ASSERT_GT(calls.size(), 6U);
    EXPECT_THAT(Strings(calls.end() - 6, calls.end()),
                ElementsAre("glDisable " + std::to_string(GL_BLEND),
                            "glEnable " + std::to_string(GL_DEPTH_TEST),
                            "glMatrixMode " + std::to_string(GL_PROJECTION), "glPopMatrix",
                            "glMatrixMode " + std::to_string(GL_MODELVIEW), "glPopMatrix"));
}

TEST_F(Rendering, leaves_matrices_colour_and_line_width_as_it_found_them) {
    drop->SetCheckState(0, true);
    openNested();
    stand_in::state.line_width = 3.5F;
    const stand_in::State before = stand_in::state;
    draw(bar);
    EXPECT_EQ(stand_in::state.projection_depth, 0);
    EXPECT_EQ(stand_in::state.modelview_depth, 0);
    EXPECT_EQ(stand_in::state.matrix_mode, before.matrix_mode);
    EXPECT_EQ(stand_in::state.colour, before.colour);
    EXPECT_EQ(stand_in::state.line_width, before.line_width);
}

TEST_F(Rendering, of_a_bar_fills_it_then_draws_highlight_and_texts) {
    const auto drawn = draw(bar);
    ASSERT_EQ(drawn.size(), 4U);
    EXPECT_EQ(drawn[0].points, box(0.0F, 0.0F, 1024.0F, 43.0F));
    EXPECT_EQ(drawn[0].colour, blue);
    // "File" starts at 0 and is 43 wide with its blank; the slot runs from below to above the bar's
    // text: 38 + 5 and 38 - 33 - 10.
    EXPECT_EQ(drawn[1].points, box(0.0F, 43.0F, 43.0F, -6.0F));
    EXPECT_EQ(drawn[1].colour, yellow);
    EXPECT_EQ(drawn[2].text, "File");
    EXPECT_EQ(drawn[2].points, (Points{{0.0F, 38.0F}}));
    EXPECT_EQ(drawn[2].colour, white);
    EXPECT_EQ(drawn[3].text, "View");
    EXPECT_EQ(drawn[3].points, (Points{{43.0F, 38.0F}}));
}

TEST_F(Rendering, fills_down_to_the_extra_vertical_offset) {
    bar.x = 100.0F;
    bar.y = 20.0F;
    bar.y_offset = 7;
    bar.Resize(1.0F, 1.0F);
    EXPECT_EQ(draw(bar)[0].points, box(100.0F, 20.0F, 1024.0F, 20.0F + 43.0F + 7.0F));
}

TEST_F(Rendering, draws_an_open_submenu_beneath_its_parent) {
    openDrop();
    EXPECT_THAT(words(draw(bar)), ElementsAre("Open", "Recent", "Quit", "File", "View"));
}

TEST_F(Rendering, draws_the_deepest_submenu_first) {
    openNested();
    EXPECT_THAT(words(draw(bar)),
                ElementsAre("One", "Two", "Open", "Recent", "Quit", "File", "View"));
}

TEST_F(Rendering, of_a_drop_down_fills_its_box_and_highlights_a_slot) {
    openDrop();
    const auto quads = shapes(draw(bar), GL_QUADS);
    ASSERT_EQ(quads.size(), 4U);
    // 43 below the bar, as wide as "Recent", a blank and two margins, three slots of 43.33 high.
    const auto right = static_cast<float>(drop->width);
    EXPECT_EQ(quads[0].points, box(0.0F, 43.0F, right, 43.0F + 129.0F));
    EXPECT_EQ(quads[1].points, box(0.0F, 42.0F, right, 80.0F));
    EXPECT_EQ(quads[1].colour, yellow);
}

TEST_F(Rendering, of_a_nested_submenu_reaches_over_its_parents_margin) {
    openNested();
    const auto quads = shapes(draw(bar), GL_QUADS);
    const float left = nested->x - 5.0F;
    EXPECT_EQ(quads[0].points[0], (Point{left, nested->y}));
    EXPECT_EQ(quads[0].points[2][0], nested->x + static_cast<float>(nested->width));
    EXPECT_EQ(quads[1].points[0][0], left);
}

TEST_F(Rendering, of_a_nested_submenu_reaches_over_by_its_own_margin_across) {
    openNested();
    nested->margin_x = 9.5F;
    nested->margin_y = 2.0F;
    const auto quads = shapes(draw(bar), GL_QUADS);
    EXPECT_EQ(quads[0].points[0][0], nested->x - 9.5F);
    // The highlight starts at a whole pixel.
    EXPECT_EQ(quads[1].points[0][0], nested->x - 10.0F);
}

TEST_F(Rendering, dims_the_text_of_a_disabled_item) {
    drop->SetTextColour(1.0F, 0.5F, 0.25F, 0.8F);
    drop->SetMenuItemState(2, false);
    openDrop();
    const auto drawn = draw(bar);
    EXPECT_EQ(textOf(drawn, "Quit").colour, (Colour{0.6F, 0.3F, 0.15F, 0.8F}));
    EXPECT_EQ(textOf(drawn, "Open").colour, (Colour{1.0F, 0.5F, 0.25F, 0.8F}));
}

// In single precision each of these products would be the next larger number.
TEST_F(Rendering, dims_in_double_precision) {
    drop->SetTextColour(0.03F, 0.07F, 0.14F, 1.0F);
    drop->SetMenuItemState(2, false);
    openDrop();
    EXPECT_EQ(textOf(draw(bar), "Quit").colour, (Colour{0.018F, 0.042F, 0.084F, 1.0F}));
}

TEST_F(Rendering, dims_the_text_of_an_item_without_a_state) {
    drop->item_states.erase(2);
    openDrop();
    EXPECT_EQ(textOf(draw(bar), "Quit").colour, (Colour{0.6F, 0.6F, 0.6F, 1.0F}));
}

TEST_F(Rendering, ticks_a_checked_item_in_full_colour_though_it_is_disabled) {
    drop->SetCheckState(0, true);
    drop->SetMenuItemState(0, false);
    openDrop();
    const auto ticks = shapes(draw(bar), GL_LINE_STRIP);
    ASSERT_EQ(ticks.size(), 1U);
    EXPECT_EQ(ticks[0].colour, white);
    // An 'H' is 13 pixels wide on the reference screen; the first baseline is at 43 + 33.33.
    const auto right = static_cast<float>(drop->width);
    const Points& at = ticks[0].points;
    ASSERT_EQ(at.size(), 3U);
    EXPECT_FLOAT_EQ(at[0][0], right - 12.35F);
    EXPECT_FLOAT_EQ(at[0][1], 60.0F);
    EXPECT_FLOAT_EQ(at[1][0], static_cast<float>(static_cast<int>(right - 6.5F)));
    EXPECT_FLOAT_EQ(at[1][1], 76.6666F);
    EXPECT_FLOAT_EQ(at[2][0], right - 0.65F);
    EXPECT_FLOAT_EQ(at[2][1], 43.3366F);
}

TEST_F(Rendering, starts_a_tick_at_a_whole_pixel) {
    bar.ReshapeCallback(1024, 730);
    drop->SetCheckState(0, true);
    openDrop();
    const auto ticks = shapes(draw(bar), GL_LINE_STRIP);
    ASSERT_EQ(ticks.size(), 1U);
    // A line is 31.68 high there and the baseline at 71: 0.48 lines above that is 55.79.
    EXPECT_EQ(ticks[0].points[0][1], 55.0F);
}

TEST_F(Rendering, ticks_as_thick_as_the_text) {
    drop->SetCheckState(0, true);
    openDrop();
    const auto drawn = draw(bar);
    const auto ticks = shapes(drawn, GL_LINE_STRIP);
    ASSERT_EQ(ticks.size(), 1U);
    EXPECT_EQ(ticks[0].line_width, textOf(drawn, "Open").line_width);
}

TEST_F(Rendering, points_an_arrow_at_an_item_with_a_submenu) {
    openDrop();
    const auto arrows = shapes(draw(bar), GL_TRIANGLES);
    ASSERT_EQ(arrows.size(), 1U);
    EXPECT_EQ(arrows[0].colour, white);
    const auto right = static_cast<float>(drop->width);
    const Points& at = arrows[0].points;
    ASSERT_EQ(at.size(), 3U);
    // The second baseline is at trunc(43.33 + 43 + 33.33).
    EXPECT_FLOAT_EQ(at[0][0], right - 13.0F);
    EXPECT_FLOAT_EQ(at[0][1], 119.6666F);
    EXPECT_FLOAT_EQ(at[1][0], right - 13.0F);
    EXPECT_FLOAT_EQ(at[1][1], 85.67F);
    EXPECT_FLOAT_EQ(at[2][0], right);
    EXPECT_FLOAT_EQ(at[2][1], (119.6666F + 85.67F) / 2.0F);
}

TEST_F(Rendering, points_an_arrow_in_full_colour_though_the_item_is_disabled) {
    drop->SetMenuItemState(1, false);
    openDrop();
    const auto arrows = shapes(draw(bar), GL_TRIANGLES);
    ASSERT_EQ(arrows.size(), 1U);
    EXPECT_EQ(arrows[0].colour, white);
}

TEST_F(Rendering, sizes_marks_by_the_roman_font_whatever_text_is_measured_with) {
    drop->SetCheckState(0, true);
    openDrop();
    GlutMenu::stroked_font = nullptr;
    const auto drawn = draw(bar);
    const auto ticks = shapes(drawn, GL_LINE_STRIP);
    const auto arrows = shapes(drawn, GL_TRIANGLES);
    ASSERT_EQ(ticks.size(), 1U);
    ASSERT_EQ(arrows.size(), 1U);
    const auto right = static_cast<float>(drop->width);
    EXPECT_FLOAT_EQ(ticks[0].points[0][0], right - 12.35F);
    EXPECT_FLOAT_EQ(arrows[0].points[0][0], right - 13.0F);
}

TEST_F(Rendering, points_an_arrow_at_a_checked_item_with_a_deleted_submenu) {
    drop->SetCheckState(1, true);
    drop->DeleteSubMenu(1);
    openDrop();
    const auto drawn = draw(bar);
    EXPECT_EQ(shapes(drawn, GL_TRIANGLES).size(), 1U);
    EXPECT_TRUE(shapes(drawn, GL_LINE_STRIP).empty());
}

TEST_F(Rendering, marks_no_item_that_has_no_check_state) {
    drop->check_states.clear();
    openDrop();
    EXPECT_TRUE(shapes(draw(bar), GL_TRIANGLES).empty());
}

TEST_F(Rendering, marks_no_item_of_a_bar) {
    bar.SetCheckState(0, true);
    bar.SetCheckState(1, true);
    const auto drawn = draw(bar);
    EXPECT_TRUE(shapes(drawn, GL_TRIANGLES).empty());
    EXPECT_TRUE(shapes(drawn, GL_LINE_STRIP).empty());
}

TEST_F(Rendering, highlights_nothing_out_of_range) {
    bar.highlighted_item = 2;
    EXPECT_EQ(shapes(draw(bar), GL_QUADS).size(), 1U);
}

TEST_F(Rendering, draws_the_dialog_once_for_every_level) {
    openNested();
    GlutMenu::CTextInput dialog;
    showMessage(dialog);
    const Strings drawn = words(draw(bar));
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), "Title"), 3);
    EXPECT_EQ(drawn.back(), "Cancel");
}

TEST_F(Rendering, draws_the_dialog_of_an_inactive_root) {
    GlutMenu::CTextInput dialog;
    showMessage(dialog);
    bar.Deactive(false);
    EXPECT_EQ(words(draw(bar)).front(), "hello");
}

TEST_F(Rendering, draws_the_dialog_though_none_is_counted) {
    GlutMenu::CTextInput dialog;
    showMessage(dialog);
    GlutMenu::num_dialogs_active = 0;
    EXPECT_THAT(words(draw(bar)), testing::Contains("hello"));
    bar.Deactive(false);
    EXPECT_THAT(words(draw(bar)), testing::Contains("hello"));
}

TEST_F(Rendering, changes_no_menu) {
    openNested();
    draw(bar);
    const auto first = stand_in::state.calls;
    draw(bar);
    EXPECT_EQ(stand_in::state.calls, first);
}

}  // namespace
