// PlainState on OpenGL of every version: it asks for nothing that came later, makes plain what is
// not, and leaves all as it was.
#include "GlutMenu/PlainState.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/glutmenu/versioned_opengl.h"

using namespace versioned;

namespace {

const std::vector<std::string> versions = {
    "1.0", "1.1", "1.2",  "1.2.1", "1.3", "1.4 (2.1 Mesa)", "1.5", "2.0", "2.1 Mesa 22.3.6",
    "3.0", "3.1", "4.6.0"};

const std::vector<std::string> none;

// Sets a value where the version has it.
void give(GLenum name, const std::vector<GLint>& values) {
    if (gl.knows(name)) gl.values[name] = values;
}

// Everything that is not on or off as no plain shape wants it, each part by a value of its own.
void makeNothingPlain() {
    give(GL_MATRIX_MODE, {GL_TEXTURE});
    give(GL_CURRENT_PROGRAM, {7});
    give(GL_POLYGON_MODE, {GL_LINE, GL_POINT});
    give(GL_COLOR_WRITEMASK, {GL_FALSE, GL_TRUE, GL_FALSE, GL_FALSE});
    give(GL_BLEND_EQUATION_RGB, {GL_FUNC_SUBTRACT});
    give(GL_BLEND_EQUATION_ALPHA, {GL_FUNC_REVERSE_SUBTRACT});
    gl.line_width = 3.0F;
}

void drawBlended() {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

}  // namespace

TEST(PlainState, AsksNoVersionForWhatCameLater) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        { const GlutMenu::PlainState plain; }
        EXPECT_EQ(gl.refused, none) << version;
    }
}

TEST(PlainState, TurnsOffAllThatTheVersionKnows) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        const GlutMenu::PlainState plain;
        EXPECT_EQ(gl.on, std::set<Switch>()) << version;
    }
}

TEST(PlainState, LeavesOnWhatWasOn) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        { const GlutMenu::PlainState plain; }
        EXPECT_EQ(gl.on, everything()) << version;
    }
}

TEST(PlainState, MakesEveryValueOfTheVersionPlain) {
    for (const std::string& version : versions) {
        start(version);
        const Values wanted = gl.values;
        makeNothingPlain();
        const GlutMenu::PlainState plain;
        EXPECT_EQ(gl.values, wanted) << version;
        EXPECT_EQ(gl.line_width, 1.0F) << version;
        EXPECT_EQ(gl.refused, none) << version;
    }
}

TEST(PlainState, LeavesEveryValueAsItWas) {
    for (const std::string& version : versions) {
        start(version);
        makeNothingPlain();
        glBlendFunc(GL_DST_COLOR, GL_SRC_COLOR);
        if (gl.number >= 20) glBlendFuncSeparate(GL_ONE, GL_DST_COLOR, GL_DST_ALPHA, GL_SRC_COLOR);
        const Values before = gl.values;
        {
            const GlutMenu::PlainState plain;
            drawBlended();
        }
        EXPECT_EQ(gl.values, before) << version;
        EXPECT_EQ(gl.line_width, 3.0F) << version;
        EXPECT_EQ(gl.refused, none) << version;
    }
}

TEST(PlainState, ChangesNothingThatIsPlain) {
    for (const std::string& version : versions) {
        start(version);
        const Values before = gl.values;
        {
            const GlutMenu::PlainState plain;
            drawBlended();
        }
        EXPECT_EQ(gl.changes, none) << version;
        EXPECT_EQ(gl.values, before) << version;
    }
}

TEST(PlainState, LetsMatrixCallsActOnTheModelView) {
    for (const GLint mode : {GL_PROJECTION, GL_TEXTURE, GL_COLOR}) {
        start("2.1");
        give(GL_MATRIX_MODE, {mode});
        {
            const GlutMenu::PlainState plain;
            EXPECT_EQ(gl.values[GL_MATRIX_MODE][0], GL_MODELVIEW);
        }
        EXPECT_EQ(gl.values[GL_MATRIX_MODE][0], mode);
    }
}

TEST(PlainState, FillsPolygonsOnEitherSide) {
    for (const GLint front : {GL_FILL, GL_LINE, GL_POINT}) {
        for (const GLint back : {GL_FILL, GL_LINE, GL_POINT}) {
            start("2.1");
            give(GL_POLYGON_MODE, {front, back});
            {
                const GlutMenu::PlainState plain;
                EXPECT_EQ(gl.values[GL_POLYGON_MODE], (std::vector<GLint>{GL_FILL, GL_FILL}));
            }
            EXPECT_EQ(gl.values[GL_POLYGON_MODE], (std::vector<GLint>{front, back}));
        }
    }
}

TEST(PlainState, WritesEveryColourWhateverWasMasked) {
    const std::vector<GLint> all = {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};
    for (unsigned masked = 0; masked < 16; ++masked) {
        start("2.1");
        std::vector<GLint> mask = all;
        for (unsigned i = 0; i < 4; ++i) mask[i] = (masked >> i & 1U) != 0 ? GL_FALSE : GL_TRUE;
        give(GL_COLOR_WRITEMASK, mask);
        {
            const GlutMenu::PlainState plain;
            EXPECT_EQ(gl.values[GL_COLOR_WRITEMASK], all) << masked;
        }
        EXPECT_EQ(gl.values[GL_COLOR_WRITEMASK], mask) << masked;
    }
}

TEST(PlainState, TakesForPlainWhatOpenGlDoesNotAnswer) {
    start("4.6");
    gl.values = {{GL_COLOR_WRITEMASK, {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE}},
                 {GL_ACTIVE_TEXTURE, {GL_TEXTURE0}}};
    gl.on = {{GL_TEXTURE0, GL_CLIP_PLANE0}, {GL_TEXTURE0, GL_TEXTURE_2D}};
    { const GlutMenu::PlainState plain; }
    EXPECT_EQ(gl.changes, none);
}

TEST(PlainState, LeavesTheTextureUnitThatWasChosen) {
    for (const bool something_is_on : {false, true}) {
        start("1.4");
        glActiveTexture(GL_TEXTURE2);
        if (something_is_on) gl.on = everything();
        {
            const GlutMenu::PlainState plain;
            EXPECT_EQ(gl.values[GL_ACTIVE_TEXTURE][0], GL_TEXTURE2);
        }
        EXPECT_EQ(gl.values[GL_ACTIVE_TEXTURE][0], GL_TEXTURE2);
    }
}

TEST(PlainState, TurnsOffRectanglesThatAreAnExtension) {
    start("2.1", "GL_ARB_multisample GL_ARB_texture_rectangle GL_EXT_fog_coord");
    gl.on = {{GL_TEXTURE1, GL_TEXTURE_RECTANGLE}};
    const GlutMenu::PlainState plain;
    EXPECT_EQ(gl.on, std::set<Switch>());
}

TEST(PlainState, TakesAVersionItCannotReadForTheFirst) {
    for (const char* version : {"", "x", "4", "4.", "OpenGL ES 3.2"}) {
        start("1.0");
        gl.on = everything();
        gl.version = version;
        const GlutMenu::PlainState plain;
        EXPECT_EQ(gl.on, std::set<Switch>()) << version;
        EXPECT_EQ(gl.refused, none) << version;
    }
}
