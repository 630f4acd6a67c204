// Who may do what with a replaced file, and what else belongs to it.
#include "platform/posix/file_attributes.h"

#include <endian.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/linux/posix_file_system.h"
#include "platform/linux/property_list_defaults.h"
#include "tests/platform/linux/intercepted_calls.h"
#include "tests/support/child_process.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr const char* list = "system.posix_acl_access";
constexpr const char* listOfNewFiles = "system.posix_acl_default";
constexpr unsigned owner = 1000;
constexpr unsigned otherGroup = 12345;

// An entry of an access control list, as the kernel's attribute has it.
struct Entry {
  enum Tag : std::uint16_t { userOwner = 1, user = 2, groupOwner = 4, group = 8, mask = 16, other = 32 };
  std::uint16_t tag;
  std::uint16_t permissions;
  std::uint32_t id = 0xFFFF'FFFF;
};

std::string attributeOf(const std::vector<Entry>& entries) {
  std::string value("\2\0\0\0", 4);  // the version
  for (const Entry& entry : entries) {
    const Entry stored{htole16(entry.tag), htole16(entry.permissions), htole32(entry.id)};
    value.append(reinterpret_cast<const char*>(&stored), sizeof stored);
  }
  return value;
}

// A list that lets user 4321 read and write, and keeps the group out.
std::string forOneMore() {
  return attributeOf(
      {{Entry::userOwner, 6}, {Entry::user, 6, 4321}, {Entry::groupOwner, 0}, {Entry::mask, 6}, {Entry::other, 0}});
}

bool set(const std::string& path, const char* name, const std::string& value) {
  return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

// Returns the value of an attribute, or "none".
std::string get(const std::string& path, const char* name) {
  std::array<char, 4096> value{};
  const ssize_t size = getxattr(path.c_str(), name, value.data(), value.size());
  return size < 0 ? "none" : std::string(value.data(), static_cast<std::size_t>(size));
}

std::string octal(unsigned mode) {
  std::array<char, 16> text{};
  EXPECT_GT(std::snprintf(text.data(), text.size(), "%04o", mode), 0);
  return text.data();
}

class ReplacedFile : public testing::Test {
 protected:
  void SetUp() override {
    makeFile(file_, "old");
    if (!set(file_, "user.test", "1")) GTEST_SKIP() << "this file system has no extended attributes";
    removexattr(file_.c_str(), "user.test");
  }

  static std::string replace(const std::string& path) {
    try {
      PosixFileSystem(Flush::never).writeAtomically(path, Bytes(std::string("new")));
      return contentOf(path);
    } catch (const Error& error) {
      return error.description();
    }
  }

  // Gives the file and its folder to the user without privileges, who belongs to no other group, but the file to
  // `group`.
  void giveAway(const std::string& path, unsigned group) const {
    ASSERT_EQ(chown(scratch_.path().c_str(), unprivilegedUser, unprivilegedUser), 0);
    ASSERT_EQ(chown(path.c_str(), unprivilegedUser, group), 0);
  }

  // Returns the mode after that user has replaced a file of this mode.
  std::string modeAfter(unsigned mode) const {
    chmod(file_.c_str(), mode);
    const std::string content = inUnprivilegedProcess([&] { return replace(file_); });
    EXPECT_EQ(content, "new");
    return octal(modeOf(file_));
  }

  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("file");
};

class ReplacedFileOfAnotherUser : public ReplacedFile {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create other users' files";
    ReplacedFile::SetUp();
  }
};

TEST_F(ReplacedFile, keepsItsAccessControlList) {
  chmod(file_.c_str(), 0600);
  ASSERT_TRUE(set(file_, list, forOneMore()));
  ASSERT_EQ(modeOf(file_), 0660U) << "the group's bits are the mask";
  EXPECT_EQ(replace(file_), "new");
  EXPECT_EQ(get(file_, list), forOneMore());
  EXPECT_EQ(modeOf(file_), 0660U);
}

TEST_F(ReplacedFileOfAnotherUser, keepsItsAccessControlListWithoutPrivileges) {
  giveAway(file_, unprivilegedUser);
  ASSERT_TRUE(set(file_, list, forOneMore()));
  EXPECT_EQ(inUnprivilegedProcess([&] { return replace(file_); }), "new");
  EXPECT_EQ(get(file_, list), forOneMore());
}

TEST_F(ReplacedFile, keepsItsExtendedAttributes) {
  ASSERT_TRUE(set(file_, "user.empty", ""));
  ASSERT_TRUE(set(file_, "user.note", std::string("a\0b", 3)));
  EXPECT_EQ(replace(file_), "new");
  EXPECT_EQ(get(file_, "user.empty"), "");
  EXPECT_EQ(get(file_, "user.note"), std::string("a\0b", 3));
}

TEST_F(ReplacedFile, inheritsNoAccessControlListFromItsFolder) {
  chmod(file_.c_str(), 0640);
  ASSERT_TRUE(set(scratch_.path(), listOfNewFiles,
                  attributeOf({{Entry::userOwner, 7},
                               {Entry::user, 7, 4321},
                               {Entry::groupOwner, 7},
                               {Entry::mask, 7},
                               {Entry::other, 0}})));
  EXPECT_EQ(replace(file_), "new");
  EXPECT_EQ(get(file_, list), "none");
  EXPECT_EQ(modeOf(file_), 0640U);
}

TEST_F(ReplacedFile, isForItsOwnerOnlyIfItsListCannotBeCopied) {
  ASSERT_TRUE(set(file_, list, forOneMore()));
  InterceptedCalls calls;
  calls.beforeSetAttribute = [](const std::string& name) { return name == list ? EPERM : 0; };
  EXPECT_EQ(replace(file_), "new");
  EXPECT_EQ(get(file_, list), "none");
  EXPECT_EQ(modeOf(file_), 0600U);
}

TEST_F(ReplacedFile, staysAsItWasIfThereIsNoSpaceForItsAttributes) {
  ASSERT_TRUE(set(file_, "user.note", "a"));
  InterceptedCalls calls;
  calls.beforeSetAttribute = [](const std::string&) { return ENOSPC; };
  EXPECT_THAT(replace(file_), testing::HasSubstr("No space left on device"));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), testing::ElementsAre("file"));
}

// The user without privileges owns the file but does not belong to its group, so the new file has another group.
TEST_F(ReplacedFileOfAnotherUser, givesAnotherGroupOnlyWhatAllHad) {
  for (const auto& [mode, after] : {std::pair(0640U, "0600"), std::pair(0660U, "0600"), std::pair(0644U, "0644"),
                                    std::pair(0664U, "0644"), std::pair(0604U, "0600"), std::pair(02750U, "0700")}) {
    giveAway(file_, otherGroup);
    EXPECT_EQ(modeAfter(mode), after);
  }
}

TEST_F(ReplacedFileOfAnotherUser, givesTheOldOwnerNoMoreThanBefore) {
  giveAway(scratch_.path(), unprivilegedUser);
  for (const auto& [mode, after] : {std::pair(0644U, "0644"), std::pair(0466U, "0444"), std::pair(04755U, "0755")}) {
    ASSERT_EQ(chown(file_.c_str(), owner, unprivilegedUser), 0);
    EXPECT_EQ(modeAfter(mode), after);
  }
}

TEST_F(ReplacedFileOfAnotherUser, losesItsListWithItsGroup) {
  giveAway(file_, otherGroup);
  ASSERT_TRUE(set(file_, list, forOneMore()));
  EXPECT_EQ(inUnprivilegedProcess([&] { return replace(file_); }), "new");
  EXPECT_EQ(get(file_, list), "none");
  EXPECT_EQ(modeOf(file_), 0600U);
}

// Files that the superuser creates in a user's folder

std::string ownerOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid);
}

class SuperuserInAHomeFolder : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only for the superuser";
    ASSERT_EQ(chown(home_.path().c_str(), owner, otherGroup), 0);
  }

  ScratchFolder home_;
  PosixFileSystem files_;
  const std::string user_ = "1000:12345";
};

TEST_F(SuperuserInAHomeFolder, createsFoldersForItsOwner) {
  files_.createFolder(home_.path("one/two"), 0700);
  files_.createFolder(home_.path("three"), defaultAttributes);
  for (const char* name : {"one", "one/two", "three"}) EXPECT_EQ(ownerOf(home_.path(name)), user_);
  EXPECT_EQ(modeOf(home_.path("one/two")), 0700U);
}

TEST_F(SuperuserInAHomeFolder, createsFilesForItsOwner) {
  files_.writeNew(home_.path("new"), {});
  files_.writeAtomically(home_.path("other"), {});
  InterceptedCalls calls;
  calls.noUnnamedFiles = true;
  files_.writeNew(home_.path("named"), {});
  for (const char* name : {"new", "other", "named"}) EXPECT_EQ(ownerOf(home_.path(name)), user_);
  EXPECT_EQ(modeOf(home_.path("new")), 0600U);
}

TEST_F(SuperuserInAHomeFolder, storesSettingsForItsOwner) {
  PropertyListDefaults(home_.path("config")).set("key", 1);
  EXPECT_EQ(ownerOf(home_.path("config")), user_);
  EXPECT_EQ(namesIn(home_.path("config")).size(), 2U) << "the settings and their lock";
  for (const std::string& name : namesIn(home_.path("config"))) EXPECT_EQ(ownerOf(home_.path("config/" + name)), user_);
}

TEST_F(SuperuserInAHomeFolder, keepsTheOwnerOfAReplacedFile) {
  makeFile(home_.path("file"), "old");
  ASSERT_EQ(chown(home_.path("file").c_str(), 1, 2), 0);
  files_.writeAtomically(home_.path("file"), {});
  EXPECT_EQ(ownerOf(home_.path("file")), "1:2");
}

TEST_F(SuperuserInAHomeFolder, ownsWhatItCreatesInASharedFolder) {
  chmod(home_.path().c_str(), 01777);
  files_.writeNew(home_.path("new"), {});
  files_.createFolder(home_.path("folder"), 0700);
  EXPECT_EQ(ownerOf(home_.path("new")), "0:0");
  EXPECT_EQ(ownerOf(home_.path("folder")), "0:0");
}

}  // namespace
