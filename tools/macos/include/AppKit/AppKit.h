// What the program uses of AppKit, declared for builds without the framework's own headers. Names, types
// and values are those of the framework's public documentation.
#pragma once

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#ifdef __cplusplus
#define APPKIT_EXTERN extern "C"
#else
#define APPKIT_EXTERN extern
#endif

NS_ASSUME_NONNULL_BEGIN

@class NSApplication;
@class NSFont;
@class NSImage;
@class NSMenu;
@class NSMenuItem;
@class NSRunningApplication;
@class NSView;
@class NSWindow;

// --- The application ---

typedef enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyAccessory = 1
} NSApplicationActivationPolicy;

typedef enum NSApplicationTerminateReply : NSUInteger {
  NSTerminateCancel = 0,
  NSTerminateNow = 1
} NSApplicationTerminateReply;

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)sender;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)app API_AVAILABLE(macos(12.0));
@end

@interface NSResponder : NSObject
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
@property(nullable, strong) NSMenu* mainMenu;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy API_AVAILABLE(macos(10.6));
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps API_DEPRECATED("use -activate", macos(10.0, 27.0));
- (void)run;
- (void)terminate:(nullable id)sender;
@end

// --- Images, fonts and text ---

typedef CGFloat NSFontWeight;
APPKIT_EXTERN const NSFontWeight NSFontWeightRegular API_AVAILABLE(macos(10.11));

API_AVAILABLE(macos(11.0))
@interface NSImageSymbolConfiguration : NSObject <NSCopying>
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight;
@end

@interface NSImage : NSObject
- (void)setTemplate:(BOOL)isTemplate;  // a method because "template", the name of the property, is a C++ keyword
- (nullable instancetype)initWithContentsOfFile:(NSString*)fileName;
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description API_AVAILABLE(macos(11.0));
- (nullable NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration API_AVAILABLE(macos(11.0));
@end

@interface NSFont : NSObject <NSCopying>
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize;
+ (NSFont*)boldSystemFontOfSize:(CGFloat)fontSize;
@end

// On Intel processors these two values are swapped.
typedef enum NSTextAlignment : NSInteger {
#if defined(__x86_64__)
  NSTextAlignmentCenter = 2
#else
  NSTextAlignmentCenter = 1
#endif
} NSTextAlignment;

// --- Menus ---

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@interface NSMenuItem : NSObject <NSCopying>
@property(copy) NSString* title;
@property(getter=isEnabled) BOOL enabled;
@property NSControlStateValue state;
@property(nullable, weak) id target;
@property(nullable, strong) NSMenu* submenu;
- (instancetype)initWithTitle:(NSString*)string action:(nullable SEL)selector keyEquivalent:(NSString*)charCode;
+ (NSMenuItem*)separatorItem;
@end

@interface NSMenu : NSObject <NSCopying>
@property BOOL autoenablesItems;
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
- (NSMenuItem*)addItemWithTitle:(NSString*)string action:(nullable SEL)selector keyEquivalent:(NSString*)charCode;
@end

// --- Views and controls ---

API_AVAILABLE(macos(10.10))
@protocol NSAccessibility <NSObject>
@property(getter=isAccessibilityElement) BOOL accessibilityElement;
@property(nullable, copy) NSString* accessibilityLabel;
@end

@interface NSView : NSResponder <NSAccessibility>
@property NSRect frame;
@property(copy, nullable) NSString* toolTip;
@property(nullable, assign) NSView* nextKeyView;
@property(nullable, readonly, assign) NSWindow* window;
- (instancetype)initWithFrame:(NSRect)frameRect;
- (void)addSubview:(NSView*)view;
- (void)display;
@end

@interface NSControl : NSView
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property NSInteger tag;
@property(getter=isEnabled) BOOL enabled;
@property(nullable, strong) NSFont* font;
@property NSTextAlignment alignment;
@end

typedef enum NSBezelStyle : NSUInteger { NSBezelStyleRounded = 1 } NSBezelStyle;

@interface NSButton : NSControl
@property NSBezelStyle bezelStyle;
@property(copy) NSString* keyEquivalent;
@property(nullable, strong) NSImage* image;
@property NSControlStateValue state;
+ (instancetype)buttonWithTitle:(NSString*)title
                         target:(nullable id)target
                         action:(nullable SEL)action API_AVAILABLE(macos(10.12));
+ (instancetype)checkboxWithTitle:(NSString*)title
                           target:(nullable id)target
                           action:(nullable SEL)action API_AVAILABLE(macos(10.12));
@end

@interface NSPopUpButton : NSButton
@property(nullable, strong) NSMenu* menu;
@property(readonly) NSInteger indexOfSelectedItem;
@property(readonly) NSInteger numberOfItems;
- (instancetype)initWithFrame:(NSRect)buttonFrame pullsDown:(BOOL)flag;
- (void)selectItemAtIndex:(NSInteger)index;
@end

typedef enum NSDatePickerStyle : NSUInteger { NSDatePickerStyleTextFieldAndStepper = 0 } NSDatePickerStyle;

typedef NSUInteger NSDatePickerElementFlags;
enum : NSUInteger { NSDatePickerElementFlagHourMinute = 0x000c };

@interface NSDatePicker : NSControl
@property NSDatePickerStyle datePickerStyle;
@property NSDatePickerElementFlags datePickerElements;
@property(copy) NSDate* dateValue;
@end

@interface NSText : NSView
- (void)cut:(nullable id)sender;
- (void)copy:(nullable id)sender;
- (void)paste:(nullable id)sender;
- (void)selectAll:(nullable id)sender;
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)stringValue API_AVAILABLE(macos(10.12));
+ (instancetype)wrappingLabelWithString:(NSString*)stringValue API_AVAILABLE(macos(10.12));
@end

typedef enum NSImageScaling : NSUInteger { NSImageScaleProportionallyUpOrDown = 3 } NSImageScaling;

@interface NSImageView : NSControl
@property(nullable, strong) NSImage* image;
@property NSImageScaling imageScaling;
@end

// --- Windows and alerts ---

typedef NSUInteger NSWindowStyleMask;
enum : NSUInteger { NSWindowStyleMaskTitled = 1 << 0, NSWindowStyleMaskClosable = 1 << 1 };

typedef NSUInteger NSWindowCollectionBehavior;
enum : NSUInteger {
  NSWindowCollectionBehaviorMoveToActiveSpace = 1 << 1,
  NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8
};

typedef enum NSBackingStoreType : NSUInteger { NSBackingStoreBuffered = 2 } NSBackingStoreType;

@interface NSWindow : NSResponder
@property(copy) NSString* title;
@property(nullable, strong) __kindof NSView* contentView;
@property(nullable, weak) NSView* initialFirstResponder;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(getter=isRestorable) BOOL restorable API_AVAILABLE(macos(10.7));
@property BOOL autorecalculatesKeyViewLoop;
@property BOOL preventsApplicationTerminationWhenModal API_AVAILABLE(macos(10.6));
@property NSWindowCollectionBehavior collectionBehavior API_AVAILABLE(macos(10.5));
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
- (void)center;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderFrontRegardless;
- (void)performClose:(nullable id)sender;
- (BOOL)makeFirstResponder:(nullable NSResponder*)responder;
- (void)orderOut:(nullable id)sender;
@end

typedef NSInteger NSModalResponse;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;

@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property(readonly, strong) NSWindow* window;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end

// --- The menu bar ---

static const CGFloat NSSquareStatusItemLength = -2.0;

API_AVAILABLE(macos(10.10))
@interface NSStatusBarButton : NSButton
@property BOOL appearsDisabled;
@end

typedef NSString* NSStatusItemAutosaveName;

@interface NSStatusItem : NSObject
@property(null_resettable, copy) NSStatusItemAutosaveName autosaveName API_AVAILABLE(macos(10.12));
@property(nullable, strong) NSMenu* menu;
@property(nullable, readonly, strong) NSStatusBarButton* button API_AVAILABLE(macos(10.10));
@end

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

// --- The session ---

API_AVAILABLE(macos(10.6))
@interface NSRunningApplication : NSObject
@property(nullable, readonly, copy) NSString* bundleIdentifier;
@property(readonly) pid_t processIdentifier;
- (BOOL)terminate;
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
@end

API_AVAILABLE(macos(10.15))
@interface NSWorkspaceOpenConfiguration : NSObject <NSCopying>
+ (instancetype)configuration;
@end

APPKIT_EXTERN NSNotificationName const NSWorkspaceDidTerminateApplicationNotification;
APPKIT_EXTERN NSNotificationName const NSWorkspaceDidWakeNotification;
APPKIT_EXTERN NSString* const NSWorkspaceApplicationKey API_AVAILABLE(macos(10.6));

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
- (BOOL)openURL:(NSURL*)url;
- (void)openApplicationAtURL:(NSURL*)applicationURL
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(nullable void (^)(NSRunningApplication* _Nullable app, NSError* _Nullable error))handler
    API_AVAILABLE(macos(10.15));
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)fileURLs API_AVAILABLE(macos(10.6));
- (nullable NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)bundleIdentifier API_AVAILABLE(macos(10.6));
@end

NS_ASSUME_NONNULL_END
