// Which special keys are bare modifiers, in freeglut's own names.

#include <GL/freeglut.h>
#include <gtest/gtest.h>

#include "GlutMenu/GlutKeys.h"

namespace {

TEST(ModifierKeys, are_those_that_act_on_other_keys) {
    for (const int key :
         {GLUT_KEY_NUM_LOCK, GLUT_KEY_SHIFT_L, GLUT_KEY_SHIFT_R, GLUT_KEY_CTRL_L, GLUT_KEY_CTRL_R,
          GLUT_KEY_ALT_L, GLUT_KEY_ALT_R, GLUT_KEY_SUPER_L, GLUT_KEY_SUPER_R}) {
        EXPECT_TRUE(GlutMenu::IsModifierKey(key)) << key;
    }
}

TEST(ModifierKeys, are_no_others) {
    for (const int key : {GLUT_KEY_F1, GLUT_KEY_F12, GLUT_KEY_LEFT, GLUT_KEY_DOWN, GLUT_KEY_INSERT,
                          GLUT_KEY_BEGIN, GLUT_KEY_DELETE, GLUT_KEY_SUPER_R + 1}) {
        EXPECT_FALSE(GlutMenu::IsModifierKey(key)) << key;
    }
}

}  // namespace
