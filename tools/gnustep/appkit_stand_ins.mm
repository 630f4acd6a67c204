// What GNUstep's AppKit lacks. tools/gnustep/include/AppKit/AppKit.h has what each stands for.
#import <AppKit/AppKit.h>

#include <map>
#include <string>

#include "tools/gnustep/replaced_methods.h"

namespace {

// What the stand-ins were given for each object, until the object ends.
std::map<const void*, std::map<std::string, id>>& stored() {
  static auto* const all = new std::map<const void*, std::map<std::string, id>>();
  return *all;
}

__strong id& valueOf(id object, const char* name) { return stored()[(__bridge const void*)object][name]; }

template <const char* className>
void (*formerDealloc)(void*, SEL);

template <const char* className>
void deallocAndForget(void* object, SEL selector) {
  stored().erase(object);
  formerDealloc<className>(object, selector);
}

template <const char* className>
void forgetAtTheEnd() {
  formerDealloc<className> = replaceMethod(className, "dealloc", deallocAndForget<className>);
}

constexpr char view[] = "NSView";
constexpr char window[] = "NSWindow";

id buttonOf(NSButton* button, NSString* title, id target, SEL action) {
  button.title = title;
  button.target = target;
  button.action = action;
  [button sizeToFit];
  return button;
}

id labelOf(NSTextField* field, NSString* text) {
  field.stringValue = text;
  field.editable = NO;
  field.bezeled = NO;
  field.drawsBackground = NO;
  return field;
}

}  // namespace

__attribute__((constructor)) static void replaceMethodsOfAppKit() {
  forgetAtTheEnd<view>();
  forgetAtTheEnd<window>();
}

@implementation NSButton (Rig)

+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
  return buttonOf([[self alloc] initWithFrame:NSZeroRect], title, target, action);
}

+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action {
  NSButton* const button = [[self alloc] initWithFrame:NSZeroRect];
  button.buttonType = NSSwitchButton;
  return buttonOf(button, title, target, action);
}

@end

@implementation NSTextField (Rig)

+ (instancetype)labelWithString:(NSString*)text {
  return labelOf([[self alloc] initWithFrame:NSZeroRect], text);
}

+ (instancetype)wrappingLabelWithString:(NSString*)text {
  NSTextField* const field = [self labelWithString:text];
  [field.cell setWraps:YES];
  return field;
}

@end

@implementation NSView (Rig)

- (BOOL)isAccessibilityElement {
  id const value = valueOf(self, "accessibilityElement");
  return value == nil || [value boolValue];
}

- (void)setAccessibilityElement:(BOOL)isElement {
  valueOf(self, "accessibilityElement") = @(isElement);
}

- (NSString*)accessibilityLabel {
  return valueOf(self, "accessibilityLabel");
}

- (void)setAccessibilityLabel:(NSString*)label {
  valueOf(self, "accessibilityLabel") = [label copy];
}

@end

@implementation NSWindow (Rig)

- (BOOL)isRestorable {
  id const value = valueOf(self, "restorable");
  return value == nil || [value boolValue];
}

- (void)setRestorable:(BOOL)isRestorable {
  valueOf(self, "restorable") = @(isRestorable);
}

- (BOOL)preventsApplicationTerminationWhenModal {
  id const value = valueOf(self, "preventsTermination");
  return value == nil || [value boolValue];
}

- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents {
  valueOf(self, "preventsTermination") = @(prevents);
}

@end

@implementation NSApplication (Rig)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)__unused policy {
  return YES;
}

@end

@implementation NSImageSymbolConfiguration

+ (instancetype)configurationWithPointSize:(CGFloat)__unused size weight:(CGFloat)__unused weight {
  return [[self alloc] init];
}

@end

@implementation NSImage (Rig)

- (void)setTemplate:(BOOL)isTemplate {
  self.name = isTemplate ? [self.name stringByAppendingString:@" template"] : self.name;
}

- (BOOL)isTemplate {
  return [self.name hasSuffix:@" template"];
}

+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)__unused description {
  NSImage* const image = [[self alloc] initWithSize:NSMakeSize(16, 16)];
  image.name = name;
  return image;
}

- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)__unused configuration {
  return self;
}

@end

// An item that shows itself nowhere.
@interface RigStatusItem : NSStatusItem
@end

@implementation RigStatusItem {
  NSString* autosaveName_;
  NSMenu* menu_;
  NSStatusBarButton* button_;
}

- (instancetype)init {
  self = [super init];
  if (self != nil) button_ = [[NSStatusBarButton alloc] initWithFrame:NSMakeRect(0, 0, 24, 24)];
  return self;
}

- (NSString*)autosaveName {
  return autosaveName_;
}

- (void)setAutosaveName:(NSString*)name {
  autosaveName_ = [name copy];
}

- (NSMenu*)menu {
  return menu_;
}

- (void)setMenu:(NSMenu*)menu {
  menu_ = menu;
}

- (NSStatusBarButton*)button {
  return button_;
}

@end

@implementation NSStatusBar (Rig)

static NSMutableArray* itemsOfTheMenuBar() {
  static NSMutableArray* const items = [[NSMutableArray alloc] init];
  return items;
}

+ (NSStatusBar*)systemStatusBar {
  static NSStatusBar* const bar = [[self alloc] init];
  return bar;
}

- (NSArray*)items {
  return itemsOfTheMenuBar();
}

- (NSStatusItem*)statusItemWithLength:(CGFloat)__unused length {
  [itemsOfTheMenuBar() addObject:[[RigStatusItem alloc] init]];
  return [itemsOfTheMenuBar() lastObject];
}

- (void)removeStatusItem:(NSStatusItem*)item {
  [itemsOfTheMenuBar() removeObject:item];
}

@end
