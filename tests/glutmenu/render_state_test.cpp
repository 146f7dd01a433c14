// Render in a real window, under each of many states that a program may have left OpenGL in: the
// same pixels as under the state of a fresh context, and the state afterwards as it was before.

#define GL_GLEXT_PROTOTYPES
#include <GL/freeglut.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "GlutMenu/CGlutMenu.h"

namespace {

constexpr int window_width = 320;
constexpr int window_height = 240;

using Pixels = std::vector<unsigned char>;

// A bar with an open submenu in it, and a dialog with a framed field over both.
class Scene {
  public:
    Scene() {
        std::vector<std::string> items = {"File", "Edit"};
        bar.Initialise(window_width, window_height, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
        bar.AddSubMenu(0, {"Open", "Recent", "Quit"}, nullptr, nullptr, "");
        bar.GetSubMenu(0)->AddSubMenu(1, {"One", "Two"}, nullptr, nullptr, "");
        bar.GetSubMenu(0)->SetCheckState(0, true);
        bar.ReshapeCallback(window_width, window_height);
        bar.Activate();
        bar.keyboard_callback(13);
        dialog.Initialise("Name", "Name", "Ada", 120, 60, 10, Accept, nullptr);
        dialog.Display();
    }
    void Render() { bar.Render(); }

  private:
    static bool Accept(std::string, std::string, void*) { return true; }

    GlutMenu::CGlutMenu bar;
    GlutMenu::CTextInput dialog;
};

// Needs OpenGL's own state, for what hides drawing hides clearing as well.
void clear() {
    glClearColor(0.3F, 0.4F, 0.2F, 1.0F);
    glClearStencil(0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

Pixels pixels() {
    Pixels found(static_cast<std::size_t>(window_width * window_height) * 4);
    glReadPixels(0, 0, window_width, window_height, GL_RGBA, GL_UNSIGNED_BYTE, found.data());
    return found;
}

const GLenum capabilities[] = {GL_ALPHA_TEST,
                               GL_AUTO_NORMAL,
                               GL_CLIP_PLANE0,
                               GL_CLIP_PLANE1,
                               GL_CLIP_PLANE2,
                               GL_CLIP_PLANE3,
                               GL_CLIP_PLANE4,
                               GL_CLIP_PLANE5,
                               GL_COLOR_LOGIC_OP,
                               GL_COLOR_MATERIAL,
                               GL_COLOR_SUM,
                               GL_CULL_FACE,
                               GL_DITHER,
                               GL_FOG,
                               GL_LIGHT0,
                               GL_LIGHTING,
                               GL_LINE_SMOOTH,
                               GL_LINE_STIPPLE,
                               GL_MULTISAMPLE,
                               GL_NORMALIZE,
                               GL_POINT_SMOOTH,
                               GL_POLYGON_OFFSET_FILL,
                               GL_POLYGON_SMOOTH,
                               GL_POLYGON_STIPPLE,
                               GL_RESCALE_NORMAL,
                               GL_SAMPLE_ALPHA_TO_COVERAGE,
                               GL_SAMPLE_ALPHA_TO_ONE,
                               GL_SAMPLE_COVERAGE,
                               GL_SCISSOR_TEST,
                               GL_STENCIL_TEST,
                               GL_VERTEX_ARRAY};

const GLenum texture_capabilities[] = {GL_TEXTURE_1D,       GL_TEXTURE_2D,        GL_TEXTURE_3D,
                                       GL_TEXTURE_CUBE_MAP, GL_TEXTURE_RECTANGLE, GL_TEXTURE_GEN_S,
                                       GL_TEXTURE_GEN_T};

const GLenum values[] = {GL_ACTIVE_TEXTURE,
                         GL_ALPHA_TEST_FUNC,
                         GL_ALPHA_TEST_REF,
                         GL_ATTRIB_STACK_DEPTH,
                         GL_BLEND_COLOR,
                         GL_BLEND_DST_ALPHA,
                         GL_BLEND_DST_RGB,
                         GL_BLEND_EQUATION_ALPHA,
                         GL_BLEND_EQUATION_RGB,
                         GL_BLEND_SRC_ALPHA,
                         GL_BLEND_SRC_RGB,
                         GL_CLIENT_ATTRIB_STACK_DEPTH,
                         GL_COLOR_CLEAR_VALUE,
                         GL_COLOR_MATERIAL_FACE,
                         GL_COLOR_MATERIAL_PARAMETER,
                         GL_COLOR_WRITEMASK,
                         GL_CULL_FACE_MODE,
                         GL_CURRENT_COLOR,
                         GL_CURRENT_NORMAL,
                         GL_CURRENT_PROGRAM,
                         GL_CURRENT_RASTER_COLOR,
                         GL_CURRENT_RASTER_POSITION,
                         GL_CURRENT_RASTER_POSITION_VALID,
                         GL_CURRENT_SECONDARY_COLOR,
                         GL_CURRENT_TEXTURE_COORDS,
                         GL_DEPTH_FUNC,
                         GL_DEPTH_RANGE,
                         GL_DEPTH_WRITEMASK,
                         GL_DRAW_BUFFER,
                         GL_EDGE_FLAG,
                         GL_FOG_COLOR,
                         GL_FOG_MODE,
                         GL_FRONT_FACE,
                         GL_LIGHT_MODEL_AMBIENT,
                         GL_LINE_STIPPLE_PATTERN,
                         GL_LINE_STIPPLE_REPEAT,
                         GL_LINE_WIDTH,
                         GL_LIST_BASE,
                         GL_LOGIC_OP_MODE,
                         GL_MATRIX_MODE,
                         GL_MODELVIEW_MATRIX,
                         GL_MODELVIEW_STACK_DEPTH,
                         GL_POINT_SIZE,
                         GL_POLYGON_MODE,
                         GL_POLYGON_OFFSET_FACTOR,
                         GL_PROJECTION_MATRIX,
                         GL_PROJECTION_STACK_DEPTH,
                         GL_READ_BUFFER,
                         GL_RENDER_MODE,
                         GL_SCISSOR_BOX,
                         GL_SHADE_MODEL,
                         GL_STENCIL_FUNC,
                         GL_STENCIL_REF,
                         GL_STENCIL_VALUE_MASK,
                         GL_STENCIL_WRITEMASK,
                         GL_TEXTURE_BINDING_2D,
                         GL_TEXTURE_MATRIX,
                         GL_TEXTURE_STACK_DEPTH,
                         GL_UNPACK_ALIGNMENT,
                         GL_VIEWPORT,
                         GL_ZOOM_X,
                         GL_ZOOM_Y};

using State = std::vector<std::array<double, 17>>;

std::array<double, 17> valueOf(GLenum name) {
    std::array<double, 17> value = {static_cast<double>(name)};
    glGetDoublev(name, value.data() + 1);
    return value;
}

std::array<double, 17> switchOf(GLenum unit, GLenum name) {
    return {static_cast<double>(name), static_cast<double>(glIsEnabled(name)),
            static_cast<double>(unit)};
}

std::array<double, 17> materialOf(GLenum parameter) {
    float part[4] = {};
    glGetMaterialfv(GL_FRONT, parameter, part);
    return {static_cast<double>(parameter), part[0], part[1], part[2], part[3]};
}

GLenum activeUnit() {
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
    return static_cast<GLenum>(unit);
}

// Everything but blending and depth testing, which are told apart.
State state() {
    State found;
    for (const GLenum name : capabilities) found.push_back(switchOf(0, name));
    for (const GLenum name : values) found.push_back(valueOf(name));
    for (const GLenum name :
         std::array<GLenum, 4>{GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_EMISSION}) {
        found.push_back(materialOf(name));
    }
    const GLenum active = activeUnit();
    for (GLenum unit = GL_TEXTURE0; unit < GL_TEXTURE0 + 4; ++unit) {
        glActiveTexture(unit);
        for (const GLenum name : texture_capabilities) found.push_back(switchOf(unit, name));
    }
    glActiveTexture(active);
    return found;
}

// One state a program may leave. It is set in a context that is fresh but for a few bytes of the
// texture bound to unit 0 and 2, which are black.
struct Left {
    std::string name;
    std::function<void()> by;
};

void PrintTo(const Left& left, std::ostream* out) {
    *out << left.name;
}

std::function<void()> enabled(GLenum name) {
    return [name] { glEnable(name); };
}

void makeTexture() {
    const unsigned char black[4] = {0, 0, 0, 255};
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, black);
}

void texture2D() {
    makeTexture();
    glEnable(GL_TEXTURE_2D);
}

void texture1D() {
    const unsigned char black[4] = {0, 0, 0, 255};
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, black);
    glEnable(GL_TEXTURE_1D);
}

void rectangleTexture() {
    const unsigned char black[4] = {0, 0, 0, 255};
    glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, black);
    glEnable(GL_TEXTURE_RECTANGLE);
}

void textureOfAnotherUnit() {
    glActiveTexture(GL_TEXTURE2);
    texture2D();
    glActiveTexture(GL_TEXTURE1);
}

void lighting() {
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
}

void colourMaterial() {
    glColorMaterial(GL_FRONT_AND_BACK, GL_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
    glColor4f(0.9F, 0.2F, 0.1F, 0.5F);
    lighting();
}

void clipPlane(GLenum plane) {
    const double nothing[4] = {0.0, 0.0, 0.0, -1.0};
    glClipPlane(plane, nothing);
    glEnable(plane);
}

void stencil() {
    glStencilFunc(GL_NEVER, 1, 0xFF);
    glStencilOp(GL_INCR, GL_INCR, GL_INCR);
    glEnable(GL_STENCIL_TEST);
}

void fog() {
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glFogf(GL_FOG_START, -10.0F);
    glFogf(GL_FOG_END, -5.0F);
    glEnable(GL_FOG);
}

void polygonStipple() {
    const std::array<unsigned char, 128> holes = {};
    glPolygonStipple(holes.data());
    glEnable(GL_POLYGON_STIPPLE);
}

void lineStipple() {
    glLineStipple(3, 0x1111);
    glEnable(GL_LINE_STIPPLE);
}

void alphaTest() {
    glAlphaFunc(GL_GREATER, 0.9F);
    glEnable(GL_ALPHA_TEST);
}

void logicOp() {
    glLogicOp(GL_INVERT);
    glEnable(GL_COLOR_LOGIC_OP);
}

void scissor() {
    glScissor(0, 0, 5, 5);
    glEnable(GL_SCISSOR_TEST);
}

void blending() {
    glBlendFuncSeparate(GL_ONE, GL_DST_COLOR, GL_ZERO, GL_DST_ALPHA);
    glBlendEquationSeparate(GL_FUNC_REVERSE_SUBTRACT, GL_MAX);
    glEnable(GL_BLEND);
}

void depth() {
    glDepthFunc(GL_NEVER);
    glDepthMask(GL_FALSE);
    glEnable(GL_DEPTH_TEST);
}

void matrices(GLenum mode) {
    for (const GLenum each : std::array<GLenum, 2>{GL_MODELVIEW, GL_PROJECTION}) {
        glMatrixMode(each);
        glRotatef(30.0F, 0.0F, 1.0F, 1.0F);
    }
    glMatrixMode(mode);
    glScalef(2.0F, 3.0F, 4.0F);
}

void secondaryColour() {
    glSecondaryColor3f(0.5F, 0.5F, 0.5F);
    glEnable(GL_COLOR_SUM);
}

void rasterPosition() {
    glPixelZoom(2.0F, 3.0F);
    glRasterPos2f(0.25F, 0.5F);
}

void program() {
    const char* text = "void main() { gl_FragColor = vec4(0.0, 0.0, 0.0, 1.0); }";
    const GLuint shader = glCreateShader(GL_FRAGMENT_SHADER);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    const GLuint made = glCreateProgram();
    glAttachShader(made, shader);
    glLinkProgram(made);
    glUseProgram(made);
}

void everything() {
    blending();
    depth();
    alphaTest();
    logicOp();
    scissor();
    stencil();
    fog();
    polygonStipple();
    lineStipple();
    secondaryColour();
    clipPlane(GL_CLIP_PLANE5);
    colourMaterial();
    program();
    textureOfAnotherUnit();
    glPolygonMode(GL_FRONT, GL_POINT);
    glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE);
    glFrontFace(GL_CW);
    glEnable(GL_CULL_FACE);
    glShadeModel(GL_FLAT);
    glLineWidth(7.0F);
    matrices(GL_TEXTURE);
}

const std::vector<Left> states = {
    {"nothing", [] {}},
    {"a_texture", texture2D},
    {"a_texture_of_one_dimension", texture1D},
    {"a_rectangle_texture", rectangleTexture},
    {"a_texture_of_another_unit", textureOfAnotherUnit},
    {"another_active_unit", [] { glActiveTexture(GL_TEXTURE3); }},
    {"lighting", lighting},
    {"colour_material", colourMaterial},
    {"a_current_colour", [] { glColor4f(0.1F, 0.2F, 0.3F, 0.4F); }},
    {"a_secondary_colour", secondaryColour},
    {"culled_fronts",
     [] {
         glCullFace(GL_FRONT);
         glEnable(GL_CULL_FACE);
     }},
    {"culled_backs", enabled(GL_CULL_FACE)},
    {"the_first_clip_plane", [] { clipPlane(GL_CLIP_PLANE0); }},
    {"the_last_clip_plane", [] { clipPlane(GL_CLIP_PLANE5); }},
    {"a_stencil", stencil},
    {"fog", fog},
    {"outlined_polygons", [] { glPolygonMode(GL_FRONT_AND_BACK, GL_LINE); }},
    {"polygons_outlined_at_the_back", [] { glPolygonMode(GL_BACK, GL_LINE); }},
    {"polygons_of_points_at_the_front", [] { glPolygonMode(GL_FRONT, GL_POINT); }},
    {"a_polygon_stipple", polygonStipple},
    {"smooth_polygons", enabled(GL_POLYGON_SMOOTH)},
    {"a_line_stipple", lineStipple},
    {"smooth_lines", enabled(GL_LINE_SMOOTH)},
    {"wide_lines", [] { glLineWidth(7.0F); }},
    {"a_scissor", scissor},
    {"an_alpha_test", alphaTest},
    {"a_logic_operation", logicOp},
    {"blending", blending},
    {"a_blend_equation", [] { glBlendEquation(GL_MIN); }},
    {"a_depth_test", depth},
    {"a_colour_mask", [] { glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_FALSE); }},
    {"flat_shading", [] { glShadeModel(GL_FLAT); }},
    {"the_model_view_matrix", [] { matrices(GL_MODELVIEW); }},
    {"the_projection_matrix", [] { matrices(GL_PROJECTION); }},
    {"the_texture_matrix", [] { matrices(GL_TEXTURE); }},
    {"a_raster_position", rasterPosition},
    {"coverage_of_samples",
     [] {
         glSampleCoverage(0.0F, GL_FALSE);
         glEnable(GL_SAMPLE_COVERAGE);
         glEnable(GL_SAMPLE_ALPHA_TO_COVERAGE);
     }},
    {"a_program", program},
    {"everything_at_once", everything},
};

class RenderLeaves : public testing::TestWithParam<Left> {
  protected:
    // Each state in a context of its own, so that none meets what another left.
    RenderLeaves() : window(glutCreateWindow("state")) {
        glutDisplayFunc([] {});
        glutMainLoopEvent();
        glViewport(0, 0, window_width, window_height);
        // Slack for what a driver may refuse before the test begins.
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    ~RenderLeaves() override { glutDestroyWindow(window); }

    Pixels drawn() {
        scene.Render();
        return pixels();
    }

    int window;
    Scene scene;
};

TEST_P(RenderLeaves, the_look_and_the_state) {
    clear();
    const Pixels background = pixels();
    const Pixels wanted = drawn();
    ASSERT_NE(wanted, background);
    glDisable(GL_DEPTH_TEST);
    clear();
    GetParam().by();
    ASSERT_EQ(glGetError(), GL_NO_ERROR) << "the state cannot be set";
    const State before = state();
    const Pixels found = drawn();
    EXPECT_EQ(glGetError(), GL_NO_ERROR);
    const State after = state();
    EXPECT_TRUE(found == wanted) << "the picture differs";
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(before[i], after[i])
            << "the state " << std::hex << static_cast<unsigned>(before[i][0]);
    }
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);
    EXPECT_EQ(glIsEnabled(GL_DEPTH_TEST), GL_TRUE);
}

TEST_P(RenderLeaves, depth_and_stencil_buffers_alone) {
    clear();
    GetParam().by();
    drawn();
    std::vector<float> depths(static_cast<std::size_t>(window_width * window_height));
    glReadPixels(0, 0, window_width, window_height, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    EXPECT_EQ(std::count(depths.begin(), depths.end(), 1.0F),
              static_cast<std::ptrdiff_t>(depths.size()));
    std::vector<unsigned char> stencils(depths.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, window_width, window_height, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE,
                 stencils.data());
    EXPECT_EQ(std::count(stencils.begin(), stencils.end(), 0),
              static_cast<std::ptrdiff_t>(stencils.size()));
}

INSTANTIATE_TEST_SUITE_P(A, RenderLeaves, testing::ValuesIn(states),
                         [](const auto& state) { return state.param.name; });

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    glutInitWindowSize(window_width, window_height);
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH | GLUT_STENCIL);
    glutSetOption(GLUT_ACTION_ON_WINDOW_CLOSE, GLUT_ACTION_CONTINUE_EXECUTION);
    return RUN_ALL_TESTS();
}
