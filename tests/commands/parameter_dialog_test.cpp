// The dialog of the current entry's parameters.
#include "commands/parameter_dialog.h"

#include <gmock/gmock.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "commands/menu_tree.h"
#include "tests/support/stand_ins.h"

using stand_ins::choose;
using stand_ins::submenu;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Texts = std::vector<std::string>;

class ParameterDialog : public stand_ins::CommandsTest {
  protected:
    ParameterDialog() {
        setCatalogue({stand_ins::someEntry("shown", 1)});
        createMenu();
        stand_ins::forget();
    }

    static void open() { choose(submenu({"Fractals"}), "Information"); }

    static fractal& entry() { return fractals.at(0); }

    static void enter(const std::string& label, const std::string& value) {
        param_change("OK", {label}, {value}, nullptr);
    }
};

TEST_F(ParameterDialog, LabelsReadAsShown) {
    EXPECT_EQ(frac_name, "Name");
    EXPECT_EQ(frac_maxIters, "Maximum iterations");
    EXPECT_EQ(frac_maxSize, "Maximum size squared");
    EXPECT_EQ(frac_xMin, "Minimum X");
    EXPECT_EQ(frac_yMin, "Minimum Y");
    EXPECT_EQ(frac_xMax, "Maximum X");
    EXPECT_EQ(frac_yMax, "Maximum Y");
}

TEST_F(ParameterDialog, ATextIsAppendedUpToItsFirstNul) {
    Texts labels, values;
    Append("Name", std::string("before\0after", 12), labels, values);
    EXPECT_THAT(labels, ElementsAre("Name"));
    EXPECT_THAT(values, ElementsAre("before"));
}

TEST_F(ParameterDialog, ALongTextIsAppendedWhole) {
    Texts labels, values;
    const std::string longName = std::string(10000, 'x') + "\xc3\xa9 \"quoted\"";
    Append("Name", longName, labels, values);
    EXPECT_EQ(values.at(0), longName);
}

TEST_F(ParameterDialog, NumbersAreAppendedWithSixDecimals) {
    Texts labels, values;
    for (const double value : {500.0, 4.0, -0.75, 1e-7, 0.0000005, 1e20}) {
        Append("Number", value, labels, values);
    }
    EXPECT_THAT(values, ElementsAre("500.000000", "4.000000", "-0.750000", "0.000000", "0.000000",
                                    "100000000000000000000.000000"));
    EXPECT_EQ(labels.size(), values.size());
}

TEST_F(ParameterDialog, ExtremeNumbersAreAppendedAsPrintfWritesThem) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double value : {std::numeric_limits<double>::max(), -1.7e308, 5e-324, inf, -inf,
                               std::nan(""), -0.0, 0.1234565, 2.5e15 + 0.5}) {
        Texts labels, values;
        Append("Number", value, labels, values);
        char expected[400];
        std::snprintf(expected, sizeof expected, "%lf", value);
        EXPECT_EQ(values.at(0), expected);
    }
}

TEST_F(ParameterDialog, InformationShowsTheEntryInOrder) {
    open();
    EXPECT_EQ(GlutMenu::input_field, &input);
    EXPECT_EQ(input.title, "Fractal information");
    EXPECT_THAT(input.field_labels,
                ElementsAre("Name", "Maximum iterations", "Maximum size squared", "Minimum X",
                            "Maximum X", "Minimum Y", "Maximum Y"));
    EXPECT_THAT(input.field_values, ElementsAre("shown", "640.000000", "9.500000", "-1.500000",
                                                "2.500000", "-0.750000", "3.250000"));
}

TEST_F(ParameterDialog, InformationIsACentredFormOfFortyCharacters) {
    open();
    EXPECT_EQ(input.kind, 3);
    EXPECT_EQ(input.max_length, 40);
    EXPECT_EQ(input.centred, 1.0f);
    EXPECT_EQ(input.form_callback, param_change);
    EXPECT_EQ(input.user_data, nullptr);
}

TEST_F(ParameterDialog, InformationShowsTheStoredEntryNotTheView) {
    maxIters = 9;
    xMin = -99.0;
    open();
    EXPECT_EQ(input.field_values.at(1), "640.000000");
    EXPECT_EQ(input.field_values.at(3), "-1.500000");
}

TEST_F(ParameterDialog, InformationByItselfOwesNoRender) {
    open();
    EXPECT_EQ(update_count, 0);
}

TEST_F(ParameterDialog, InformationOnAnEmptyCatalogueShowsNothing) {
    for (const int index : {-1, 0}) {
        fractals.clear();
        currentFractal = index;
        open();
        EXPECT_EQ(GlutMenu::input_field, nullptr);
    }
}

TEST_F(ParameterDialog, AnyNameSurvivesTheDialog) {
    for (const std::string& name : {std::string("two words"), std::string("\"quoted\" 'names'"),
                                    std::string("\u00e9\u4e2d"), std::string(10000, 'n')}) {
        entry().name = name;
        open();
        input.KeyboardHandler(13, "");
        EXPECT_EQ(entry().name, name);
    }
}

TEST_F(ParameterDialog, EveryLabelStoresItsMember) {
    param_change("OK",
                 {"Name", "Maximum iterations", "Maximum size squared", "Minimum X", "Minimum Y",
                  "Maximum X", "Maximum Y"},
                 {"renamed", "111", "2.5", "-3.5", "-4.5", "5.5", "6.5"}, nullptr);
    EXPECT_EQ(entry().name, "renamed");
    EXPECT_EQ(entry().maxIters, 111);
    EXPECT_EQ(entry().maxSize, 2.5);
    EXPECT_EQ(entry().xMin, -3.5);
    EXPECT_EQ(entry().yMin, -4.5);
    EXPECT_EQ(entry().xMax, 5.5);
    EXPECT_EQ(entry().yMax, 6.5);
}

TEST_F(ParameterDialog, TheEditedEntryBecomesTheView) {
    enter("Minimum X", "-8");
    EXPECT_EQ(xMin, -8.0);
    EXPECT_EQ(stand_ins::glut.titles.back(), " shown");
}

TEST_F(ParameterDialog, TheChangeIsAnnouncedBeforeTheViewIsReported) {
    forgetOutput();
    enter("Name", "other");
    EXPECT_EQ(printed().substr(0, printed().find(" Z-range")), "Fractal parameters changed\nother");
}

TEST_F(ParameterDialog, AChangeOwesTheStepAndTheRender) {
    enter("Name", "other");
    EXPECT_EQ(update_count, 2);
    EXPECT_GE(stand_ins::glut.redisplays, 1);
}

class AcceptingButton : public ParameterDialog, public testing::WithParamInterface<std::string> {};

TEST_P(AcceptingButton, StoresTheValues) {
    EXPECT_TRUE(param_change(GetParam(), {"Minimum X"}, {"-8"}, nullptr));
    EXPECT_EQ(entry().xMin, -8.0);
}

INSTANTIATE_TEST_SUITE_P(Buttons, AcceptingButton, testing::Values("", "OK"));

class DiscardingButton : public ParameterDialog, public testing::WithParamInterface<std::string> {};

TEST_P(DiscardingButton, ChangesNothing) {
    forgetOutput();
    EXPECT_TRUE(param_change(GetParam(), {"Minimum X"}, {"-8"}, nullptr));
    EXPECT_EQ(entry().xMin, -1.5);
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(printed(), "");
}

INSTANTIATE_TEST_SUITE_P(Buttons, DiscardingButton,
                         testing::Values("Cancel", "ok", "OK ", "Apply"));

TEST_F(ParameterDialog, UnpairedListsChangeNothing) {
    forgetOutput();
    EXPECT_TRUE(param_change("OK", {"Minimum X", "Maximum X"}, {"-8"}, nullptr));
    EXPECT_EQ(entry().xMin, -1.5);
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(printed(), "");
}

TEST_F(ParameterDialog, UnknownLabelsAreSkipped) {
    param_change("OK", {"minimum x", "", "Minimum X"}, {"1", "2", "-8"}, nullptr);
    EXPECT_EQ(entry().xMin, -8.0);
    EXPECT_EQ(entry().name, "shown");
}

TEST_F(ParameterDialog, TheLastOfEqualLabelsWins) {
    param_change("OK", {"Minimum X", "Minimum X"}, {"1", "2"}, nullptr);
    EXPECT_EQ(entry().xMin, 2.0);
}

TEST_F(ParameterDialog, NothingIsValidated) {
    param_change("OK", {"Minimum X", "Maximum X"}, {"5", "-5"}, nullptr);
    EXPECT_EQ(entry().xMin, 5.0);
    EXPECT_EQ(entry().xMax, -5.0);
}

TEST_F(ParameterDialog, AnEmptyCatalogueTakesNoValues) {
    for (const int index : {-1, 0, 5}) {
        fractals.clear();
        currentFractal = index;
        EXPECT_TRUE(param_change("OK", {"Minimum X"}, {"-8"}, nullptr));
        EXPECT_TRUE(fractals.empty());
    }
}

struct TypedIterations {
    std::string typed;
    int stored;
};

class Iterations : public ParameterDialog, public testing::WithParamInterface<TypedIterations> {};

TEST_P(Iterations, AreTruncatedAndSaturate) {
    enter("Maximum iterations", GetParam().typed);
    EXPECT_EQ(entry().maxIters, GetParam().stored);
}

constexpr int LARGEST = std::numeric_limits<int>::max(), SMALLEST = std::numeric_limits<int>::min();

INSTANTIATE_TEST_SUITE_P(
    Typed, Iterations,
    testing::Values(TypedIterations{"250.9", 250}, TypedIterations{"-3.7", -3},
                    TypedIterations{"abc", 0}, TypedIterations{"", 0},
                    TypedIterations{"2147483647", LARGEST}, TypedIterations{"2147483648", LARGEST},
                    TypedIterations{"1e300", LARGEST}, TypedIterations{"inf", LARGEST},
                    TypedIterations{"-2147483648", SMALLEST}, TypedIterations{"-1e10", SMALLEST},
                    TypedIterations{"nan", 0}, TypedIterations{"12 monkeys", 12}));

struct TypedNumber {
    std::string typed;
    double stored;
};

class Numbers : public ParameterDialog, public testing::WithParamInterface<TypedNumber> {};

TEST_P(Numbers, AreReadAsAtofReadsThem) {
    enter("Minimum X", GetParam().typed);
    EXPECT_EQ(entry().xMin, GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(
    Typed, Numbers,
    testing::Values(TypedNumber{"1e-3", 0.001}, TypedNumber{"  \t-2.5xyz", -2.5},
                    TypedNumber{"+7", 7.0}, TypedNumber{"0x1.8p1", 3.0}, TypedNumber{".5", 0.5},
                    TypedNumber{"5.", 5.0}, TypedNumber{"1,5", 1.0}, TypedNumber{"letters", 0.0},
                    TypedNumber{"1e", 1.0}, TypedNumber{"--1", 0.0}, TypedNumber{"", 0.0},
                    TypedNumber{"1e999", HUGE_VAL}, TypedNumber{"-infinity", -HUGE_VAL},
                    TypedNumber{"4.9e-324", 5e-324}));

TEST_F(ParameterDialog, NotANumberIsTakenAsTyped) {
    enter("Minimum X", "nan");
    EXPECT_TRUE(std::isnan(entry().xMin));
}

// The locale of a user who writes a decimal comma, compiled for the occasion.
class DecimalComma {
  public:
    DecimalComma() {
        const std::string command = "localedef -f UTF-8 -i de_DE " + (folder / "de_DE.UTF-8");
        setenv("LOCPATH", folder.path.c_str(), 1);
        active = std::system((command + " 2>/dev/null >&2").c_str()) == 0 &&
                 std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    }
    ~DecimalComma() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;

    bool active = false;

  private:
    stand_ins::TemporaryFolder folder;
};

TEST_F(ParameterDialog, ADecimalCommaLocaleChangesNoNumber) {
    const DecimalComma locale;
    if (!locale.active) GTEST_SKIP() << "no locale with a decimal comma can be made";
    ASSERT_EQ(std::atof("1.5"), 1.0);
    enter("Minimum X", "1.5");
    EXPECT_EQ(entry().xMin, 1.5);
    Texts labels, values;
    Append("Number", 1.5, labels, values);
    EXPECT_EQ(values.at(0), "1.500000");
}

TEST_F(ParameterDialog, ARenamedEntryIsShownUnderItsNewName) {
    open();
    input.field_values[0] = "unused";
    input.edit_text = "brand new";
    input.KeyboardHandler(13, "OK");
    open();
    EXPECT_EQ(input.field_values.at(0), "brand new");
}

TEST_F(ParameterDialog, CancelInTheDialogDiscardsTheEdits) {
    open();
    input.edit_text = "brand new";
    input.KeyboardHandler(13, "Cancel");
    EXPECT_EQ(entry().name, "shown");
    EXPECT_EQ(GlutMenu::input_field, nullptr);
}

}  // namespace
