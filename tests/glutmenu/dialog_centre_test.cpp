// Where a centred dialog lies.

#include "tests/glutmenu/dialog_fixture.h"

namespace {

class CentredDialog : public DialogTest {
  protected:
    // Centres a single field in a window of this height.
    void centreInWindow(int height) {
        GlutMenu::CGlutMenu bar;
        initialiseBar(bar, {"A"}, 1024, height);
        openSingleField("Ada", 12);
        dialog.Center();
    }
};

TEST_F(CentredDialog, with_a_single_field_is_centred_by_two_lines) {
    openSingleField("Ada", 12);
    dialog.Center();
    EXPECT_EQ(dialog.centred, 1.0F);
    const int w = static_cast<int>(dialog.field_width + dialog.label_width);
    EXPECT_EQ(dialog.x, static_cast<float>(512 - w / 2));
    EXPECT_EQ(dialog.y, 384.0F - 33.0F);
}

TEST_F(CentredDialog, with_a_message_is_centred_by_its_lines) {
    openMessage({"One"});
    dialog.Center();
    // Three lines and one more, 33.33 each.
    EXPECT_EQ(dialog.y, 384.0F - 66.0F);
    EXPECT_EQ(dialog.x, static_cast<float>(512 - static_cast<int>(dialog.label_width) / 2));
}

TEST_F(CentredDialog, with_a_form_is_centred_by_its_values) {
    openForm({"A", "B"}, {"a", "b"}, 9);
    dialog.Center();
    EXPECT_EQ(dialog.y, 384.0F - 49.0F);
}

TEST_F(CentredDialog, is_centred_in_the_window_whatever_the_drawing_space) {
    openSingleField("Ada", 12);
    stand_in::state.window_width = 801;
    stand_in::state.window_height = 613;
    dialog.Center();
    const int w = static_cast<int>(dialog.field_width + dialog.label_width);
    EXPECT_EQ(dialog.x, static_cast<float>(400 - w / 2));
    EXPECT_EQ(dialog.y, 306.0F - 33.0F);
}

TEST_F(CentredDialog, divides_a_centred_height_by_the_scale) {
    centreInWindow(1536);
    EXPECT_EQ(dialog.y, 768.0F - 33.0F);
}

TEST_F(CentredDialog, cuts_a_divided_height_off_before_halving_it) {
    centreInWindow(700);
    // 60 at a scale of 0.911 are 65.8.
    EXPECT_EQ(dialog.y, 350.0F - 32.0F);
}

TEST_F(CentredDialog, cuts_a_centred_width_off_before_halving_it) {
    openSingleField("Ada", 11);
    dialog.Center();
    // "Name:" is 54.78 wide and the field 143.
    EXPECT_EQ(dialog.x, 512.0F - 98.0F);
}

TEST_F(CentredDialog, cuts_a_centred_height_off_before_dividing_it) {
    centreInWindow(192);
    // Two lines are 16.665 high, 16 of which make 64 at a scale of a quarter.
    EXPECT_EQ(dialog.y, 96.0F - 32.0F);
}

TEST_F(CentredDialog, stays_centred_when_its_size_changes) {
    openSingleField("Ada", 12);
    dialog.Center();
    stand_in::state.window_width = 500;
    dialog.WorkOutSize();
    const int w = static_cast<int>(dialog.field_width + dialog.label_width);
    EXPECT_EQ(dialog.x, static_cast<float>(250 - w / 2));
}

TEST_F(CentredDialog, is_no_longer_centred_when_initialised_again) {
    openSingleField("Ada", 12);
    dialog.Center();
    openMessage({"One"});
    EXPECT_EQ(dialog.centred, 0.0F);
    EXPECT_EQ(dialog.x, 50.0F);
}

}  // namespace
