// The status item without a tray: the display of these tests has none.
#include "platform/qt/qt_status_item.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QTest>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/qt/icon_files.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_screen.h"
#include "platform/qt/svg_icon.h"
#include "tests/platform/qt/run_until.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::HasSubstr;

class QtStatusItemTest : public testing::Test {
 protected:
  QtStatusItemTest() {
    testing::internal::CaptureStderr();
    item_ = screen_.makeStatusItem();
    message_ = testing::internal::GetCapturedStderr();
  }

  QtEventLoop loop_;
  QtScreen screen_{loop_};
  std::shared_ptr<StatusItem> item_;
  std::string message_;
};

TEST_F(QtStatusItemTest, reportsAMissingTray) {
  EXPECT_THAT(message_, HasSubstr("quillery: no system tray; opening the program again shows its menu\n"));
  EXPECT_TRUE(screen_.isWithoutTray());
  item_.reset();
  EXPECT_FALSE(screen_.isWithoutTray()) << "there is no item to show";
}

TEST_F(QtStatusItemTest, itsMenuOpensAtThePointer) {
  const auto menu = screen_.makeMenu();
  bool isChosen = false;
  menu->addItem("Item", [&] { isChosen = true; });
  screen_.popUpMenu();
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "it has no menu yet";
  item_->setMenu(menu);
  EXPECT_EQ(item_->menu(), menu);
  screen_.popUpMenu();
  auto* const shown = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(shown, nullptr);
  EXPECT_TRUE(shown->frameGeometry().adjusted(-2, -2, 2, 2).contains(QCursor::pos()));
  QTest::keyClick(shown, Qt::Key_Down);
  QTest::keyClick(shown, Qt::Key_Return);
  EXPECT_TRUE(runUntil([&] { return isChosen; }));
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(QtStatusItemTest, itsMenuCanBeReplaced) {
  item_->setMenu(screen_.makeMenu());
  item_->setMenu(nullptr);
  EXPECT_EQ(item_->menu(), nullptr);
  screen_.popUpMenu();
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(QtStatusItemTest, canBeChangedWithoutATray) {
  item_->setImage({"bookmark", "Quillery", true});
  item_->setToolTip("Sorted just now");
  item_->setAppearsDisabled(true);
  const QPalette usual = QApplication::palette();
  QPalette dark = usual;
  dark.setColor(QPalette::WindowText, Qt::white);
  QApplication::setPalette(dark);
  QApplication::setPalette(usual);
}

// Returns the colour of a point on the ribbon's edge in an icon of 64 pixels.
QColor colourOf(const QIcon& icon) { return icon.pixmap(QSize(64, 64), 1.0).toImage().pixelColor(16, 32); }

TEST(SvgIcon, aSymbolHasTheDesktopsTextColour) {
  const QIcon icon = symbolicIcon(bookmarkSymbolFile, "no-such-icon", QIcon::Normal);
  const QPalette usual = QApplication::palette();
  for (const char* const name : {"#ffffff", "#000000", "#123456"}) {
    QPalette palette = usual;
    palette.setColor(QPalette::WindowText, QColor(name));
    QApplication::setPalette(palette);
    EXPECT_EQ(colourOf(icon), QColor(name));
  }
  QApplication::setPalette(usual);
}

// Returns the number of the icon's pixels that stand out from a panel of this colour, of 22 by 22.
int visiblePixels(const QIcon& icon, const QColor& panel) {
  QImage image(22, 22, QImage::Format_RGB32);
  image.fill(panel);
  QPainter painter(&image);
  icon.paint(&painter, image.rect());
  painter.end();
  int visible = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      visible += std::abs(image.pixelColor(x, y).lightness() - panel.lightness()) > 80 ? 1 : 0;
  return visible;
}

TEST(SvgIcon, aSymbolStandsOutFromAPanelOfAnyColour) {
  const QPalette usual = QApplication::palette();
  for (const char* const text : {"#000000", "#2e3436", "#eeeeee", "#ffffff"}) {
    QPalette palette = usual;
    palette.setColor(QPalette::WindowText, QColor(text));
    QApplication::setPalette(palette);
    const QIcon icon = symbolicIcon(bookmarkSymbolFile, "no-such-icon", QIcon::Normal);
    for (const char* const panel : {"#000000", "#2e3436", "#808080", "#dedede", "#ffffff"})
      EXPECT_GE(visiblePixels(icon, QColor(panel)), 60) << text << " on " << panel;
  }
  QApplication::setPalette(usual);
}

TEST(SvgIcon, aDisabledSymbolIsPale) {
  const int normal = colourOf(symbolicIcon(bookmarkSymbolFile, "none", QIcon::Normal)).alpha();
  const int disabled = colourOf(symbolicIcon(bookmarkSymbolFile, "none", QIcon::Disabled)).alpha();
  EXPECT_EQ(normal, 255);
  EXPECT_GT(disabled, 60);
  EXPECT_LT(disabled, 180);
}

TEST(SvgIcon, isDrawnInEverySizeOnTransparency) {
  for (const int side : {16, 22, 48, 256, 512}) {
    const QImage image = svgIcon(applicationIconFile, "none").pixmap(QSize(side, side), 1.0).toImage();
    ASSERT_EQ(image.size(), QSize(side, side));
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(image.pixelColor(side / 4, side / 5).alpha(), 255);
  }
}

TEST(SvgIcon, hasANameOnlyIfTheIconThemeHasIt) {
  EXPECT_EQ(svgIcon(applicationIconFile, "no-such-icon").name(), QString());
  EXPECT_EQ(symbolicIcon(bookmarkSymbolFile, "no-such-icon", QIcon::Normal).name(), QString());
}

// A theme of icons with one symbol.
class IconTheme {
 public:
  IconTheme() {
    std::filesystem::create_directories(folder_.path("tests/symbols"));
    makeFile(folder_.path("tests/index.theme"),
             "[Icon Theme]\nName=Tests\nDirectories=symbols\n[symbols]\nSize=16\nType=Scalable\n");
    makeFile(folder_.path("tests/symbols/a-symbol.svg"), bookmarkSymbolFile);
    QIcon::setThemeSearchPaths({QString::fromStdString(folder_.path())});
    QIcon::setThemeName("tests");
  }
  ~IconTheme() {
    QIcon::setThemeSearchPaths(usualPaths_);
    QIcon::setThemeName(usualName_);
  }
  IconTheme(const IconTheme&) = delete;
  IconTheme& operator=(const IconTheme&) = delete;

 private:
  ScratchFolder folder_;
  QStringList usualPaths_ = QIcon::themeSearchPaths();
  QString usualName_ = QIcon::themeName();
};

// The panel of LXQt draws a named symbol as its file is: dark on a dark panel.
TEST(SvgIcon, aSymbolHasNoNameWherePanelsDoNotColourIt) {
  const IconTheme theme;
  const auto nameOn = [](const std::string& desktop) {
    const EnvironmentScope scope("XDG_CURRENT_DESKTOP", desktop);
    return symbolicIcon(bookmarkSymbolFile, "a-symbol", QIcon::Normal).name();
  };
  EXPECT_EQ(nameOn("XFCE"), "a-symbol");
  EXPECT_EQ(nameOn("LXQt"), QString());
  EXPECT_EQ(nameOn("Debian:LXQt"), QString());
}

}  // namespace
