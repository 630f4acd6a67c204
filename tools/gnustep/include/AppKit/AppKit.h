// GNUstep's AppKit, with what it lacks of Apple's. appkit_stand_ins.mm and session_stand_ins.mm implement it.
#pragma once

#include_next <AppKit/AppKit.h>

// For the macro __unused, which is defined after GNUstep's headers.
#import <Foundation/Foundation.h>

// Names that GNUstep writes in another way.
#define NSBezelStyleRounded NSRoundedBezelStyle
#define NSDatePickerStyleTextFieldAndStepper NSTextFieldAndStepperDatePickerStyle
#define NSDatePickerElementFlagHourMinute NSHourMinuteDatePickerElementFlag

// These do what Apple's do with GNUstep's own controls.

@interface NSButton (Rig)
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action;
@end

@interface NSTextField (Rig)
+ (instancetype)labelWithString:(NSString*)text;
+ (instancetype)wrappingLabelWithString:(NSString*)text;
@end

@interface NSAlert (Rig)
@property(readonly) NSWindow* window;  // of the type id in GNUstep
@end

// These only store what they are given.

@interface NSView (Rig)
@property(getter=isAccessibilityElement) BOOL accessibilityElement;
@property(copy) NSString* accessibilityLabel;
@end

@interface NSWindow (Rig)
@property(getter=isRestorable) BOOL restorable;
@property BOOL preventsApplicationTerminationWhenModal;
@end

@interface NSApplication (Rig)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

// Only so that the program can go on: there is no menu bar, and there are no symbols.

@interface NSImageSymbolConfiguration : NSObject
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(CGFloat)weight;
@end

@interface NSImage (Rig)
- (void)setTemplate:(BOOL)isTemplate;
- (BOOL)isTemplate;
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description;
- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration;
@end

@interface NSStatusItem (Rig)
@property(copy) NSString* autosaveName;
@property(readonly) NSStatusBarButton* button;
@end

@interface NSStatusBar (Rig)
// Returns the items in the menu bar, for tests.
@property(readonly) NSArray* items;
@end

// The applications of the session, by the files of the folder that the variable QUILLERY_RIG names.

extern NSString* const NSWorkspaceApplicationKey;

@interface NSRunningApplication (Rig)
// For tests: what a notification of its end has.
+ (NSRunningApplication*)endedApplicationWithBundleIdentifier:(NSString*)identifier;
@end

@interface NSWorkspaceOpenConfiguration : NSObject
+ (instancetype)configuration;
@end

@interface NSWorkspace (Rig)
- (void)openApplicationAtURL:(NSURL*)url
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(void (^)(NSRunningApplication*, NSError*))handler;
- (void)activateFileViewerSelectingURLs:(NSArray*)urls;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier;
@end
