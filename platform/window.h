// Windows and what is in them, described by the program and drawn by the platform. Lengths are in points, and the
// origin of a frame is at the bottom left of the window's content.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/calendar.h"

// What a control does when it is used.
using Action = std::function<void()>;

struct Frame {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const Frame&, const Frame&) = default;
};

// The key that presses a button from anywhere in its window. The button of Return is the default one, and is drawn so.
enum class KeyEquivalent { none, returnKey, escape };

// A push button or a check box.
class Button {
 public:
  virtual ~Button() = default;
  virtual bool isOn() const = 0;
  virtual void setOn(bool on) = 0;
  virtual void setEnabled(bool enabled) = 0;
  // The number that the program gave it.
  virtual int tag() const = 0;
};

class PopUpButton {
 public:
  virtual ~PopUpButton() = default;
  // The index of the item chosen, from 0. Choosing one here does not call the action.
  virtual std::size_t selectedIndex() const = 0;
  virtual void select(std::size_t index) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

// A field for the time of day of an instant, with a stepper; hours and minutes of the user's calendar.
class DatePicker {
 public:
  virtual ~DatePicker() = default;
  virtual Instant dateValue() const = 0;
  virtual void setDateValue(Instant date) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

// A button that is pressed. The one of Return is the default button of its window.
struct PushButton {
  Frame frame;
  std::string title;
  Action action;
  KeyEquivalent key = KeyEquivalent::none;
};

// A button that is on or off and off at first; using it changes that, and then calls the action if there is one.
struct CheckBox {
  Frame frame;
  std::string title;
  Action action;
  int tag = 0;  // a number of the program's own
};

struct PopUp {
  Frame frame;
  std::vector<std::string> items;  // the first is chosen at first
  Action action;                   // when its user has chosen
};

struct Label {
  Frame frame;
  std::string text;      // lines end at "\n" and, where it wraps, wherever the frame does
  double fontSize = 13;  // of the system's font
  bool isBold = false;
  bool isCentered = false;
  bool wraps = true;
};

// An image from a file; nothing is shown if it cannot be read.
struct Image {
  Frame frame;
  std::string path;
};

// Created hidden; nobody can resize or minimise it. It outlives being closed, and is gone when its last
// reference is.
struct WindowDescription {
  int width = 0;  // of the content
  int height = 0;
  std::string title;
  bool isClosable = false;  // by its user; without it there is no close box, and no other way to close it
};

class Window {
 public:
  virtual ~Window() = default;

  // Controls come on top of one another in the order in which they are added, and Tab goes through them in it.
  virtual std::shared_ptr<Button> add(const PushButton& button) = 0;
  virtual std::shared_ptr<Button> add(const CheckBox& checkBox) = 0;
  virtual std::shared_ptr<PopUpButton> add(const PopUp& popUp) = 0;
  virtual std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) = 0;
  virtual void add(const Label& label) = 0;
  virtual void add(const Image& image) = 0;

  // Puts it in the middle of the screen.
  virtual void center() = 0;
  // Shows it in front of the program's other windows and gives it the keyboard.
  virtual void makeKeyAndOrderFront() = 0;
  // Takes it off the screen.
  virtual void orderOut() = 0;
};
