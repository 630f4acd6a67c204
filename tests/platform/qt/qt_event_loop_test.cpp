// What the session layer relies on in Qt's event loop.
#include "platform/qt/qt_event_loop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <memory>

#include "platform/posix/file_descriptor.h"
#include "tests/platform/qt/run_until.h"

namespace {

class QtEventLoopTest : public testing::Test {
 protected:
  QtEventLoopTest() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    reader_ = FileDescriptor(ends[0]);
    writer_ = FileDescriptor(ends[1]);
  }

  void makeReadable() { EXPECT_EQ(write(writer_.get(), "x", 1), 1); }
  void drain() {
    char byte = 0;
    EXPECT_EQ(read(reader_.get(), &byte, 1), 1);
  }
  // Lets the loop handle all that is ready.
  void turn() {
    bool isOver = false;
    const auto marker = loop_.watch(writer_.get(), Readiness::writable, [&] { isOver = true; });
    EXPECT_TRUE(runUntil([&] { return isOver; }));
  }

  QtEventLoop loop_;
  FileDescriptor reader_{-1};
  FileDescriptor writer_{-1};
};

TEST_F(QtEventLoopTest, callsTheHandlerWhileTheDescriptorIsReady) {
  int calls = 0;
  const auto watch = loop_.watch(reader_.get(), Readiness::readable, [&] { ++calls; });
  turn();
  EXPECT_EQ(calls, 0);
  makeReadable();
  EXPECT_TRUE(runUntil([&] { return calls >= 3; })) << "the descriptor stays ready until it is read";
  drain();
  turn();
  const int callsUntilDrained = calls;
  turn();
  EXPECT_EQ(calls, callsUntilDrained);
}

TEST_F(QtEventLoopTest, callsTheHandlerInANestedLoop) {
  int calls = 0;
  const auto watch = loop_.watch(reader_.get(), Readiness::readable, [&] {
    ++calls;
    drain();
  });
  bool isOver = false;
  loop_.post([&] {
    makeReadable();
    EXPECT_TRUE(runUntil([&] { return calls == 1; }));
    isOver = true;
  });
  EXPECT_TRUE(runUntil([&] { return isOver; }));
}

TEST_F(QtEventLoopTest, callsNoHandlerOfADisabledWatch) {
  int calls = 0;
  const auto watch = loop_.watch(reader_.get(), Readiness::readable, [&] {
    ++calls;
    drain();
  });
  watch->setEnabled(false);
  makeReadable();
  turn();
  EXPECT_EQ(calls, 0);
  watch->setEnabled(true);
  EXPECT_TRUE(runUntil([&] { return calls == 1; }));
}

TEST_F(QtEventLoopTest, callsTheHandlerAfterAHangUp) {
  bool isAtEnd = false;
  const auto watch = loop_.watch(reader_.get(), Readiness::readable, [&] {
    char byte = 0;
    isAtEnd = read(reader_.get(), &byte, 1) == 0;
  });
  writer_ = FileDescriptor(-1);
  EXPECT_TRUE(runUntil([&] { return isAtEnd; }));
}

TEST_F(QtEventLoopTest, aHandlerMayDestroyItsOwnWatch) {
  const auto held = std::make_shared<int>(5);
  std::unique_ptr<DescriptorWatch> watch;
  int calls = 0;
  watch = loop_.watch(reader_.get(), Readiness::readable, [&, held] {
    watch.reset();
    calls += *held;
  });
  makeReadable();
  EXPECT_TRUE(runUntil([&] { return calls > 0; }));
  turn();
  EXPECT_EQ(calls, 5);
  EXPECT_EQ(held.use_count(), 1) << "the handler is released";
}

TEST_F(QtEventLoopTest, watchesBothDirectionsOfADescriptorAtOnce) {
  bool isWritable = false;
  const auto toRead = loop_.watch(writer_.get(), Readiness::readable, [] { FAIL() << "there is nothing to read"; });
  const auto toWrite = loop_.watch(writer_.get(), Readiness::writable, [&] { isWritable = true; });
  EXPECT_TRUE(runUntil([&] { return isWritable; }));
}

}  // namespace
