// When menus are destroyed, seen by their memory: this program has its own operator delete.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Menus to look out for, null where it was freed, and those freed, in that order. Of fixed size:
// nothing may be allocated while memory is given back.
std::array<const void*, 8> watched{};
std::array<const void*, 8> freed{};
std::size_t freed_count = 0;

void release(void* memory) noexcept {
    const auto seen = std::find(watched.begin(), watched.end(), memory);
    if (memory != nullptr && seen != watched.end()) {
        *seen = nullptr;
        freed[freed_count++] = memory;
    }
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}

namespace {

class Destruction : public ToolkitTest {
  protected:
    Destruction() : bar(std::make_unique<CGlutMenu>()) {
        initialiseBar(*bar, {"A", "B", "C"});
        watched.fill(nullptr);
        freed_count = 0;
    }
    ~Destruction() override { watched.fill(nullptr); }

    // Gives an item a submenu whose end is watched.
    static CGlutMenu* add(CGlutMenu& menu, int i) {
        menu.AddSubMenu(i, {"X", "Y", "Z"}, nullptr, nullptr, "");
        CGlutMenu* const child = menu.GetSubMenu(i);
        *std::find(watched.begin(), watched.end(), nullptr) = child;
        return child;
    }

    static std::vector<const void*> destroyed() {
        return std::vector<const void*>(freed.data(), freed.data() + freed_count);
    }

    std::unique_ptr<CGlutMenu> bar;
};

TEST_F(Destruction, comes_to_a_deleted_submenu_at_once) {
    const CGlutMenu* const child = add(*bar, 0);
    add(*bar, 1);
    bar->DeleteSubMenu(0);
    EXPECT_THAT(destroyed(), ElementsAre(child));
}

TEST_F(Destruction, comes_to_a_replaced_submenu_at_once) {
    const CGlutMenu* const child = add(*bar, 0);
    const CGlutMenu* const successor = add(*bar, 0);
    EXPECT_NE(child, successor);
    EXPECT_THAT(destroyed(), ElementsAre(child));
}

TEST_F(Destruction, takes_the_submenus_of_a_submenu_along) {
    CGlutMenu* const child = add(*bar, 0);
    CGlutMenu* const grandchild = add(*child, 1);
    const CGlutMenu* const deepest = add(*grandchild, 2);
    bar->DeleteSubMenu(0);
    EXPECT_THAT(destroyed(), ElementsAre(deepest, grandchild, child));
}

TEST_F(Destruction, of_the_root_goes_through_the_items_in_order) {
    const CGlutMenu* const last = add(*bar, 7);
    CGlutMenu* const first = add(*bar, 0);
    const CGlutMenu* const middle = add(*bar, 1);
    const CGlutMenu* const first_last = add(*first, 2);
    const CGlutMenu* const first_first = add(*first, 0);
    bar.reset();
    EXPECT_THAT(destroyed(), ElementsAre(first_first, first_last, first, middle, last));
}

TEST_F(Destruction, spares_submenus_that_an_initialisation_forgets) {
    add(*bar, 0);
    initialiseBar(*bar, {"A"});
    EXPECT_THAT(destroyed(), IsEmpty());
}

TEST_F(Destruction, of_the_root_takes_the_submenus_it_forgot_along) {
    CGlutMenu* const forgotten = add(*bar, 0);
    const CGlutMenu* const nested = add(*forgotten, 1);
    const CGlutMenu* const beside = add(*bar, 2);
    initialiseBar(*bar, {"A"});
    const CGlutMenu* const successor = add(*bar, 0);
    initialiseBar(*bar, {"A"});
    const CGlutMenu* const last = add(*bar, 0);
    bar.reset();
    EXPECT_THAT(destroyed(),
                testing::UnorderedElementsAre(forgotten, nested, beside, successor, last));
    EXPECT_EQ(destroyed().front(), last);
}

TEST_F(Destruction, of_a_submenu_takes_the_submenus_it_forgot_along) {
    CGlutMenu* const child = add(*bar, 0);
    const CGlutMenu* const forgotten = add(*child, 1);
    Strings items = {"B"};
    child->Initialise(1024, 768, 0, 0, 0, 0, "", items, 1.0F, 1.0F, false, true);
    EXPECT_THAT(destroyed(), IsEmpty());
    bar->DeleteSubMenu(0);
    EXPECT_THAT(destroyed(), ElementsAre(forgotten, child));
}

}  // namespace
