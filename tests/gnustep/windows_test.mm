// Windows, controls, menus and the status item: what they pass on to AppKit, and how long they live.
#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/appkit_screen.h"
#include "platform/macos/desktop/main_menu.h"
#include "platform/menu.h"
#include "tests/gnustep/instances.h"

namespace {

NSWindow* lastWindow() {
  NSWindow* last = nil;
  for (NSWindow* window in NSApp.windows)
    if ([window class] == [NSWindow class] && (last == nil || window.windowNumber > last.windowNumber)) last = window;
  return last;
}

NSView* lastControl() { return [lastWindow().contentView subviews].lastObject; }

template <class Control>
Control* last() {
  EXPECT_TRUE([lastControl() isKindOfClass:[Control class]]);
  return static_cast<Control*>(lastControl());
}

class WindowTest : public testing::Test {
 protected:
  // Waits for the windows of earlier tests to end.
  void SetUp() override {
    static const int none = instancesOf(@"NSWindow");
    ASSERT_TRUE(runUntil([] { return instancesOf(@"NSWindow") == none; }));
  }

  std::shared_ptr<Window> make() {
    return screen_.makeWindow({.width = 400, .height = 300, .title = "Títle", .isClosable = true});
  }
  Action note(const std::string& what) {
    return [this, what] { noted_.push_back(what); };
  }

  AppKitScreen screen_;
  std::vector<std::string> noted_;
};

TEST_F(WindowTest, hasItsSizeTitleAndStyle) {
  @autoreleasepool {
    const auto window = make();
    EXPECT_EQ(textOf(lastWindow().title), "Títle");
    EXPECT_EQ([lastWindow().contentView frame].size.width, 400);
    EXPECT_EQ([lastWindow().contentView frame].size.height, 300);
    EXPECT_TRUE(lastWindow().styleMask & NSTitledWindowMask);
    EXPECT_TRUE(lastWindow().styleMask & NSClosableWindowMask);
    EXPECT_FALSE(lastWindow().isReleasedWhenClosed);
    EXPECT_FALSE(lastWindow().isRestorable);
    EXPECT_FALSE(lastWindow().autorecalculatesKeyViewLoop);
    const auto fixed = screen_.makeWindow({.width = 1, .height = 1, .title = "", .isClosable = false});
    EXPECT_FALSE(lastWindow().styleMask & NSClosableWindowMask);
  }
}

TEST_F(WindowTest, showsCentersAndHidesItself) {
  @autoreleasepool {
    const auto window = make();
    NSWindow* const shown = lastWindow();
    EXPECT_FALSE(shown.isVisible);
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(shown.isVisible);
    EXPECT_TRUE(shown.isKeyWindow);
    const NSPoint corner = shown.frame.origin;
    window->center();
    EXPECT_FALSE(NSEqualPoints(shown.frame.origin, corner));
    window->orderOut();
    EXPECT_FALSE(shown.isVisible);
  }
}

TEST_F(WindowTest, hidesAtOnceAndEndsInTheNextTurn) {
  const int before = instancesOf(@"NSWindow");
  bool wasVisible = true;
  @autoreleasepool {
    auto window = make();
    __unsafe_unretained NSWindow* const shown = lastWindow();
    window->makeKeyAndOrderFront();
    window = nullptr;
    wasVisible = shown.isVisible;
    EXPECT_EQ(instancesOf(@"NSWindow"), before + 1);
  }
  EXPECT_FALSE(wasVisible);
  EXPECT_TRUE(runUntil([&] { return instancesOf(@"NSWindow") == before; }));
}

TEST_F(WindowTest, pushButtonCallsItsAction) {
  @autoreleasepool {
    const auto window = make();
    const auto button = window->add(PushButton{{10, 20, 90, 30}, "Prëss", note("pressed"), KeyEquivalent::returnKey});
    EXPECT_EQ(textOf(last<NSButton>().title), "Prëss");
    EXPECT_TRUE(NSEqualRects(lastControl().frame, NSMakeRect(10, 20, 90, 30)));
    EXPECT_EQ(last<NSButton>().bezelStyle, NSBezelStyleRounded);
    EXPECT_EQ(textOf(last<NSButton>().keyEquivalent), "\r");
    [last<NSButton>() performClick:nil];
    EXPECT_EQ(noted_, std::vector<std::string>{"pressed"});
    button->setEnabled(false);
    EXPECT_FALSE(last<NSButton>().isEnabled);
    [last<NSButton>() performClick:nil];
    EXPECT_EQ(noted_.size(), 1U);
    button->setEnabled(true);
    [last<NSButton>() performClick:nil];
    EXPECT_EQ(noted_.size(), 2U);
    window->add(PushButton{{}, "Cancel", nullptr, KeyEquivalent::escape});
    EXPECT_EQ(textOf(last<NSButton>().keyEquivalent), "\x1b");
    window->add(PushButton{{}, "Neither", nullptr});
    EXPECT_EQ(textOf(last<NSButton>().keyEquivalent), "");
    [last<NSButton>() performClick:nil];
  }
}

TEST_F(WindowTest, checkBoxStoresItsStateAndTag) {
  @autoreleasepool {
    const auto window = make();
    const auto box = window->add(CheckBox{{0, 0, 90, 30}, "Box", note("changed"), 7});
    EXPECT_EQ(textOf(last<NSButton>().title), "Box");
    EXPECT_EQ(box->tag(), 7);
    EXPECT_FALSE(box->isOn());
    box->setOn(true);
    EXPECT_TRUE(box->isOn());
    EXPECT_EQ(last<NSButton>().state, NSControlStateValueOn);
    EXPECT_TRUE(noted_.empty()) << "setting is no action";
    [last<NSButton>() performClick:nil];
    EXPECT_FALSE(box->isOn());
    EXPECT_EQ(noted_.size(), 1U);
    box->setOn(true);
    box->setOn(false);
    EXPECT_FALSE(box->isOn());
    box->setAccessibilityLabel("Sunday");
    EXPECT_EQ(textOf(lastControl().accessibilityLabel), "Sunday");
  }
}

TEST_F(WindowTest, popUpKeepsEqualItemsAndItsSelection) {
  @autoreleasepool {
    const auto window = make();
    const auto popUp = window->add(PopUp{{0, 0, 90, 30}, {"Every day", "Custom", "Custom"}, note("selected")});
    EXPECT_EQ(last<NSPopUpButton>().numberOfItems, 3);
    EXPECT_EQ(popUp->selectedIndex(), 0U);
    popUp->select(2);
    EXPECT_EQ(popUp->selectedIndex(), 2U);
    popUp->select(3);
    EXPECT_EQ(popUp->selectedIndex(), 2U);
    EXPECT_TRUE(noted_.empty());
    [last<NSPopUpButton>() sendAction:last<NSPopUpButton>().action to:last<NSPopUpButton>().target];
    EXPECT_EQ(noted_.size(), 1U);
    popUp->setAccessibilityLabel("Days");
    EXPECT_EQ(textOf(lastControl().accessibilityLabel), "Days");
    popUp->setEnabled(false);
    EXPECT_FALSE(last<NSPopUpButton>().isEnabled);
    const auto empty = window->add(PopUp{{0, 0, 90, 30}, {}, nullptr});
    EXPECT_EQ(empty->selectedIndex(), 0U);
  }
}

TEST_F(WindowTest, timePickerKeepsItsInstant) {
  @autoreleasepool {
    const auto window = make();
    const auto picker = window->addTimePicker({0, 0, 90, 30});
    EXPECT_EQ(last<NSDatePicker>().datePickerElements, NSDatePickerElementFlagHourMinute);
    const Instant instant{std::chrono::seconds(1'700'000'000)};
    picker->setDateValue(instant);
    EXPECT_EQ(picker->dateValue(), instant);
    EXPECT_EQ(last<NSDatePicker>().dateValue.timeIntervalSince1970, 1'700'000'000);
    picker->setAccessibilityLabel("Time");
    EXPECT_EQ(textOf(lastControl().accessibilityLabel), "Time");
    picker->setEnabled(false);
    EXPECT_FALSE(last<NSDatePicker>().isEnabled);
  }
}

TEST_F(WindowTest, timePickerEndsTheEditingWhenRead) {
  @autoreleasepool {
    const auto window = make();
    const auto picker = window->addTimePicker({0, 0, 90, 30});
    window->makeKeyAndOrderFront();
    [lastWindow() makeFirstResponder:lastControl()];
    EXPECT_EQ(lastWindow().firstResponder, lastControl());
    picker->dateValue();
    EXPECT_EQ(lastWindow().firstResponder, lastWindow());
  }
}

TEST_F(WindowTest, labelsAndImagesAreShown) {
  @autoreleasepool {
    const auto window = make();
    window->add(
        Label{.frame = {1, 2, 30, 40}, .text = "Löng text", .fontSize = 17, .isBold = true, .isCentered = true});
    NSTextField* const bold = last<NSTextField>();
    EXPECT_EQ(textOf(bold.stringValue), "Löng text");
    EXPECT_TRUE([bold.font isEqual:[NSFont boldSystemFontOfSize:17]]);
    EXPECT_EQ(bold.alignment, NSTextAlignmentCenter);
    EXPECT_TRUE([bold.cell wraps]);
    EXPECT_TRUE(NSEqualRects(bold.frame, NSMakeRect(1, 2, 30, 40)));
    window->add(Label{.text = "plain", .fontSize = 11, .wraps = false});
    NSTextField* const plain = last<NSTextField>();
    EXPECT_TRUE([plain.font isEqual:[NSFont systemFontOfSize:11]]);
    EXPECT_NE(plain.alignment, NSTextAlignmentCenter);
    window->add(Image{{5, 6, 7, 8}, "/nonexistent.icns"});
    NSImageView* const view = last<NSImageView>();
    EXPECT_EQ(view.imageScaling, NSImageScaleProportionallyUpOrDown);
    EXPECT_FALSE(view.isAccessibilityElement);
    EXPECT_TRUE(NSEqualRects(view.frame, NSMakeRect(5, 6, 7, 8)));
  }
}

TEST_F(WindowTest, tabVisitsTheControlsInOrder) {
  @autoreleasepool {
    const auto window = make();
    window->add(CheckBox{{}, "first", nullptr, 0});
    NSView* const first = lastControl();
    window->add(Label{.text = "between"});
    window->addTimePicker({});
    NSView* const second = lastControl();
    window->add(PopUp{{}, {}, nullptr});
    EXPECT_EQ(lastWindow().initialFirstResponder, first);
    EXPECT_EQ(first.nextKeyView, second);
    EXPECT_EQ(second.nextKeyView, lastControl());
  }
}

TEST_F(WindowTest, endsItsControlsAndTargets) {
  const std::vector<NSString*> classes = {@"ActionTarget", @"NSWindow",    @"NSButton",   @"NSPopUpButton",
                                          @"NSDatePicker", @"NSTextField", @"NSImageView"};
  std::vector<int> before;
  for (NSString* name : classes) before.push_back(instancesOf(name));
  const auto held = std::make_shared<int>();
  @autoreleasepool {
    const auto window = make();
    window->add(PushButton{{}, "button", [held] {}});
    window->add(CheckBox{{}, "box", [held] {}, 0});
    window->add(PopUp{{}, {"item"}, [held] {}});
    window->addTimePicker({});
    window->add(Label{.text = "text"});
    window->add(Image{{}, "/nonexistent"});
    window->makeKeyAndOrderFront();
    EXPECT_EQ(held.use_count(), 4);
    EXPECT_EQ(instancesOf(@"ActionTarget"), before[0] + 3);
  }
  EXPECT_TRUE(runUntil([&] { return instancesOf(@"NSWindow") == before[1]; }));
  turn();
  EXPECT_EQ(held.use_count(), 1);
  for (std::size_t index = 0; index < classes.size(); ++index)
    EXPECT_EQ(instancesOf(classes[index]), before[index]) << textOf(classes[index]);
}

TEST_F(WindowTest, mayEndInTheActionOfItsButton) {
  const auto held = std::make_shared<int>(5);
  std::shared_ptr<Window> window = make();
  @autoreleasepool {
    window->add(PushButton{{0, 0, 90, 30}, "Close", [this, &window, held] {
                             window = nullptr;
                             turn();
                             EXPECT_EQ(*held, 5) << "the action lasts until it returns";
                             note("closed")();
                           }});
    NSButton* const button = last<NSButton>();
    window->makeKeyAndOrderFront();
    [button performClick:nil];
  }
  EXPECT_EQ(noted_.size(), 1U);
  turn();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(WindowTest, controlsMayOutliveIt) {
  std::shared_ptr<Button> button;
  std::shared_ptr<PopUpButton> popUp;
  std::shared_ptr<DatePicker> picker;
  @autoreleasepool {
    const auto window = make();
    button = window->add(CheckBox{{}, "box", note("never"), 3});
    popUp = window->add(PopUp{{}, {"first", "second"}, note("never")});
    picker = window->addTimePicker({});
  }
  turn();
  button->setOn(true);
  button->setEnabled(false);
  button->setAccessibilityLabel("label");
  EXPECT_TRUE(button->isOn());
  EXPECT_EQ(button->tag(), 3);
  // GNUstep's pop-up button keeps its former superview, which is gone, so selecting an item is left out.
  EXPECT_EQ(popUp->selectedIndex(), 0U);
  picker->setDateValue(Instant{std::chrono::seconds(60)});
  EXPECT_EQ(picker->dateValue(), Instant{std::chrono::seconds(60)});
}

TEST_F(WindowTest, endsInsideANestedLoop) {
  const int before = instancesOf(@"NSWindow");
  bool hasEnded = false;
  bool* const result = &hasEnded;
  [NSRunLoop.mainRunLoop performInModes:@[ NSRunLoopCommonModes ]
                                  block:^{
                                    @autoreleasepool {
                                      make()->makeKeyAndOrderFront();
                                    }
                                    *result = runUntil([before] { return instancesOf(@"NSWindow") == before; });
                                    note("nested")();
                                  }];
  EXPECT_TRUE(runUntil([&] { return !noted_.empty(); }));
  EXPECT_TRUE(hasEnded);
}

class MenuTest : public WindowTest {};

NSMenu* menuOfTheBar() { return [NSStatusBar.systemStatusBar.items.lastObject menu]; }

NSStatusItem* itemOfTheBar() { return NSStatusBar.systemStatusBar.items.lastObject; }

void perform(NSMenuItem* item) { [NSApp sendAction:item.action to:item.target from:item]; }

TEST_F(MenuTest, itemsHaveTitlesStatesAndActions) {
  @autoreleasepool {
    const auto bar = screen_.makeStatusItem();
    const auto menu = screen_.makeMenu();
    const auto item = menu->addItem("Först", note("first"));
    menu->addSeparator();
    menu->addItem("Second", note("second"));
    menu->addItem("Without an action", nullptr);
    bar->setMenu(menu);
    EXPECT_EQ(bar->menu(), menu);
    NSArray* const items = menuOfTheBar().itemArray;
    ASSERT_EQ(items.count, 4U);
    EXPECT_EQ(item->title(), "Först");
    EXPECT_EQ(textOf([items[0] title]), "Först");
    EXPECT_TRUE([items[1] isSeparatorItem]);
    perform(items[0]);
    perform(items[2]);
    perform(items[3]);
    EXPECT_EQ(noted_, (std::vector<std::string>{"first", "second"}));
    item->setTitle("Other");
    EXPECT_EQ(textOf([items[0] title]), "Other");
    item->setOn(true);
    EXPECT_EQ([items[0] state], NSControlStateValueOn);
    item->setOn(false);
    EXPECT_EQ([items[0] state], NSControlStateValueOff);
    menu->setAutoenablesItems(false);
    item->setEnabled(false);
    [menuOfTheBar() update];
    EXPECT_FALSE([items[0] isEnabled]);
    menu->setAutoenablesItems(true);
    [menuOfTheBar() update];
    EXPECT_TRUE([items[0] isEnabled]) << "every item has a target";
  }
}

TEST_F(MenuTest, mayEndInTheActionOfItsItem) {
  const auto held = std::make_shared<int>(5);
  const int before = instancesOf(@"ActionTarget");
  @autoreleasepool {
    auto bar = screen_.makeStatusItem();
    auto menu = screen_.makeMenu();
    const auto item = menu->addItem("Quit", [&, held] {
      bar = nullptr;
      menu = nullptr;
      turn();
      EXPECT_EQ(*held, 5);
    });
    bar->setMenu(menu);
    perform(menuOfTheBar().itemArray[0]);
    EXPECT_EQ(NSStatusBar.systemStatusBar.items.count, 0U);
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(instancesOf(@"ActionTarget"), before);
}

TEST_F(MenuTest, statusItemShowsWhatItIsGiven) {
  @autoreleasepool {
    {
      const auto bar = screen_.makeStatusItem();
      EXPECT_EQ(textOf(itemOfTheBar().autosaveName), "Quillery");
      bar->setImage({.name = "bookmark", .accessibilityDescription = "Quillery", .isTemplate = true});
      EXPECT_EQ(textOf(itemOfTheBar().button.image.name), "bookmark template");
      bar->setToolTip("Tïp");
      EXPECT_EQ(textOf(itemOfTheBar().button.toolTip), "Tïp");
      bar->setAppearsDisabled(true);
      bar->display();
      EXPECT_TRUE(itemOfTheBar().button.appearsDisabled);
      bar->setMenu(screen_.makeMenu());
      EXPECT_NE(itemOfTheBar().menu, nil);
      bar->setMenu(nullptr);
      EXPECT_EQ(itemOfTheBar().menu, nil);
    }
    EXPECT_EQ(NSStatusBar.systemStatusBar.items.count, 0U) << "removed from the bar";
  }
}

TEST_F(MenuTest, mainMenuHasTheKeysOfItsCommands) {
  @autoreleasepool {
    std::string found;
    for (NSMenuItem* top in mainMenu().itemArray)
      for (NSMenuItem* item in top.submenu.itemArray) {
        EXPECT_EQ(item.target, nil);
        EXPECT_EQ(item.keyEquivalentModifierMask, NSUInteger{NSCommandKeyMask});
        found += textOf(top.title) + "/" + textOf(item.title) + " " + textOf(item.keyEquivalent) + " " +
                 textOf(NSStringFromSelector(item.action)) + "\n";
      }
    EXPECT_EQ(found, "Quillery/Quit q terminate:\nFile/Close w performClose:\nEdit/Cut x cut:\nEdit/Copy c copy:\n"
                     "Edit/Paste v paste:\nEdit/Select All a selectAll:\n");
  }
}

}  // namespace
