// Windows and their controls, described by the program and drawn by the platform. Lengths are in points. The origin of
// a frame is at the bottom left of the window's content.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/calendar.h"

// Runs when the user operates a control. It must not throw.
using Action = std::function<void()>;

struct Frame {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const Frame&, const Frame&) = default;
};

// The key that presses a button, wherever the keyboard focus is in its window. The button with `returnKey` is the
// window's default button and is drawn as such.
enum class KeyEquivalent { none, returnKey, escape };

// A push button or a check box.
class Button {
 public:
  virtual ~Button() = default;
  // Sets what a screen reader says in place of the title.
  virtual void setAccessibilityLabel(const std::string& label) = 0;
  virtual bool isOn() const = 0;
  virtual void setOn(bool on) = 0;
  virtual void setEnabled(bool enabled) = 0;
  // Returns the number from its description.
  virtual int tag() const = 0;
};

class PopUpButton {
 public:
  virtual ~PopUpButton() = default;
  // Sets what a screen reader says before the selected item.
  virtual void setAccessibilityLabel(const std::string& label) = 0;
  // Returns the index of the selected item, from 0.
  virtual std::size_t selectedIndex() const = 0;
  // Selects an item without calling the action.
  virtual void select(std::size_t index) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

// A field with a stepper for hour and minute, in the user's calendar.
class DatePicker {
 public:
  virtual ~DatePicker() = default;
  // Sets what a screen reader says before the time.
  virtual void setAccessibilityLabel(const std::string& label) = 0;
  virtual Instant dateValue() const = 0;
  virtual void setDateValue(Instant date) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

struct PushButton {
  Frame frame;
  std::string title;
  Action action;
  KeyEquivalent key = KeyEquivalent::none;
};

// Initially off. A click toggles it and then calls the action, if there is one.
struct CheckBox {
  Frame frame;
  std::string title;
  Action action;
  int tag = 0;  // for the program's own use
};

struct PopUp {
  Frame frame;
  std::vector<std::string> items;  // the first is selected initially
  Action action;                   // called when the user has selected an item
};

struct Label {
  Frame frame;
  std::string text;      // lines break at "\n" and, if `wraps` is set, at the frame's edge
  double fontSize = 13;  // of the system's font, in points
  bool isBold = false;
  bool isCentered = false;
  bool wraps = true;
};

// A decorative image from a file, which screen readers ignore. If the file cannot be read, nothing is shown.
struct Image {
  Frame frame;
  std::string path;
};

struct WindowDescription {
  int width = 0;  // of the content
  int height = 0;
  std::string title;
  bool isClosable = false;  // by the user; if not, there is no close box and no key that closes it
};

// A window that the user can neither resize nor minimise. Closing hides it; releasing its last reference destroys it.
class Window {
 public:
  virtual ~Window() = default;

  // Adds a control. Tab visits controls in the order in which they were added, and later controls cover earlier ones.
  virtual std::shared_ptr<Button> add(const PushButton& button) = 0;
  virtual std::shared_ptr<Button> add(const CheckBox& checkBox) = 0;
  virtual std::shared_ptr<PopUpButton> add(const PopUp& popUp) = 0;
  virtual std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) = 0;
  virtual void add(const Label& label) = 0;
  virtual void add(const Image& image) = 0;

  // Moves the window to the middle of the screen.
  virtual void center() = 0;
  // Shows the window in front of the program's other windows and gives it the keyboard focus.
  virtual void makeKeyAndOrderFront() = 0;
  // Hides the window.
  virtual void orderOut() = 0;
};
