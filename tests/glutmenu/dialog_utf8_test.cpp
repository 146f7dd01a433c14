// Editing of texts that are not plain ASCII: catalogues bring names of any bytes.

#include <cstddef>
#include <ostream>

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;
using testing::ElementsAre;

namespace {

constexpr int backspace = 8;
constexpr int delete_key = 127;

using Places = std::vector<int>;

class Editing : public DialogTest {
  protected:
    void open(const std::string& text) { openSingleField(text, 40); }

    // Where the cursor stands on the text as it goes through it.
    Places placesFromTheEnd() {
        Places places;
        press({end});
        for (; dialog.cursor_pos >= 0; press({arrow_left})) places.push_back(dialog.cursor_pos);
        return places;
    }
    Places placesFromTheStart() {
        Places places;
        press({home});
        do {
            places.push_back(dialog.cursor_pos);
            press({arrow_right});
        } while (dialog.cursor_pos != 0);
        return places;
    }
    // What is left of the text after each deletion from its end.
    Strings leftBy(int key) {
        Strings left;
        press({end});
        while (dialog.cursor_pos > 0) {
            press({key});
            left.push_back(dialog.edit_text);
        }
        return left;
    }
};

// "a", e with an acute accent, the euro sign, a smiling face, "z".
const std::string mixed = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";

TEST_F(Editing, steps_over_whole_characters_to_the_left) {
    open(mixed);
    EXPECT_THAT(placesFromTheEnd(), ElementsAre(11, 10, 6, 3, 1, 0));
    EXPECT_EQ(dialog.cursor_pos, -1);
}

TEST_F(Editing, steps_over_whole_characters_to_the_right) {
    open(mixed);
    EXPECT_THAT(placesFromTheStart(), ElementsAre(0, 1, 3, 6, 10, 11));
}

TEST_F(Editing, deletes_whole_characters) {
    for (const int key : {backspace, delete_key}) {
        open(mixed);
        EXPECT_THAT(leftBy(key), ElementsAre("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
                                             "a\xC3\xA9\xE2\x82\xAC", "a\xC3\xA9", "a", ""));
    }
}

TEST_F(Editing, deletes_a_whole_character_within_the_text) {
    open(mixed);
    press({arrow_left, arrow_left, backspace});
    EXPECT_EQ(dialog.edit_text, "a\xC3\xA9\xF0\x9F\x98\x80z");
    EXPECT_EQ(dialog.cursor_pos, 3);
    EXPECT_EQ(dialog.text_length, 8);
}

TEST_F(Editing, types_between_whole_characters) {
    open("\xC3\xA9\xC3\xA9");
    press({arrow_left, 'x'});
    EXPECT_EQ(dialog.edit_text, "\xC3\xA9x\xC3\xA9");
    EXPECT_EQ(dialog.cursor_pos, 3);
}

TEST_F(Editing, steps_over_whole_characters_in_a_form) {
    openForm({"A", "B"}, {"one", "\xC3\xA9\xE2\x82\xAC"}, 20);
    press({arrow_down, arrow_left, backspace});
    EXPECT_EQ(dialog.edit_text, "\xE2\x82\xAC");
    EXPECT_EQ(dialog.cursor_pos, 0);
    press({arrow_right});
    EXPECT_EQ(dialog.cursor_pos, 3);
}

TEST_F(Editing, in_the_middle_of_a_character_spares_no_half_of_it) {
    for (const int place : {7, 8, 9}) {
        SCOPED_TRACE(place);
        open(mixed);
        dialog.cursor_pos = place;
        press({arrow_left});
        EXPECT_EQ(dialog.cursor_pos, 6);
        dialog.cursor_pos = place;
        press({arrow_right});
        EXPECT_EQ(dialog.cursor_pos, 10);
        dialog.cursor_pos = place;
        press({'x'});
        EXPECT_EQ(dialog.edit_text, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80xz");
        EXPECT_EQ(dialog.cursor_pos, 11);
        dialog.cursor_pos = place;
        press({backspace});
        EXPECT_EQ(dialog.edit_text, "a\xC3\xA9\xE2\x82\xACxz");
        EXPECT_EQ(dialog.cursor_pos, 6);
    }
}

TEST_F(Editing, stands_behind_a_character_that_a_deletion_joined) {
    open("\xC3x\xA9y");
    press({arrow_left, arrow_left, backspace});
    EXPECT_EQ(dialog.edit_text, "\xC3\xA9y");
    EXPECT_EQ(dialog.cursor_pos, 2);
}

// The first and the last character of every length, and those beside the surrogates.
class WellFormed : public Editing, public testing::WithParamInterface<std::string> {};

TEST_P(WellFormed, character_is_one_step_and_one_deletion) {
    const int size = static_cast<int>(GetParam().size());
    open("a" + GetParam() + "z");
    EXPECT_THAT(placesFromTheEnd(), ElementsAre(size + 2, size + 1, 1, 0));
    EXPECT_THAT(placesFromTheStart(), ElementsAre(0, 1, size + 1, size + 2));
    EXPECT_THAT(leftBy(backspace), ElementsAre("a" + GetParam(), "a", ""));
}

INSTANTIATE_TEST_SUITE_P(Utf8, WellFormed,
                         testing::Values("\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
                                         "\xE1\x80\x80", "\xEC\xBF\xBF", "\xED\x9F\xBF",
                                         "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
                                         "\xF1\x80\x80\x80", "\xF3\xBF\xBF\xBF",
                                         "\xF4\x8F\xBF\xBF"));

// Overlong forms, surrogates, numbers past the last character, torn and stray bytes.
class IllFormed : public Editing, public testing::WithParamInterface<std::string> {};

TEST_P(IllFormed, bytes_are_a_step_and_a_deletion_each) {
    const std::string text = "a" + GetParam() + "z";
    open(text);
    Places forwards;
    Strings left;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        forwards.push_back(static_cast<int>(i));
        if (i > 0) left.push_back(text.substr(0, text.size() - i));
    }
    EXPECT_EQ(placesFromTheStart(), forwards);
    EXPECT_EQ(placesFromTheEnd(), Places(forwards.rbegin(), forwards.rend()));
    EXPECT_EQ(leftBy(backspace), left);
}

INSTANTIATE_TEST_SUITE_P(Utf8, IllFormed,
                         testing::Values("\x80", "\xBF", "\xFE\xFF", "\xC3", "\xE2\x82",
                                         "\xF0\x9F\x98", "\xC3\xC3", "\xC0\x80", "\xC1\xBF",
                                         "\xE0\x80\x80", "\xE0\x9F\xBF", "\xED\xA0\x80",
                                         "\xED\xBF\xBF", "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",
                                         "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x28\xAC",
                                         "\xF0\x9F\x28\x80", "\x80\x80\x80\x80"));

TEST_F(Editing, takes_a_stray_byte_behind_a_character_for_one_of_its_own) {
    open("\xC3\xA9\xA9\xE2\x82\xAC\x80\xF0\x9F\x98\x80\xBF");
    EXPECT_THAT(placesFromTheEnd(), ElementsAre(12, 11, 7, 6, 3, 2, 0));
    EXPECT_THAT(placesFromTheStart(), ElementsAre(0, 2, 3, 6, 7, 11, 12));
}

}  // namespace
