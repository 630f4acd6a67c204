#include "platform/linux/session/bus_members.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* safari = "com.apple.Safari";

TEST(BusMembers, reportsADepartureForEachNameOfAConnection) {
  BusMembers members;
  members.arrived(":1.1");
  members.hasName(":1.1", safari);
  members.hasName(":1.1", "com.apple.Mail");
  members.hasName(":1.1", safari);
  members.hasProcess(":1.1", 11);
  EXPECT_THAT(members.left(":1.1"), ElementsAre(FieldsAre("com.apple.Mail", 11), FieldsAre(safari, 11)));
  EXPECT_THAT(members.left(":1.1"), IsEmpty());
}

TEST(BusMembers, reportsNoDepartureWithoutNames) {
  BusMembers members;
  members.arrived(":1.1");
  members.hasProcess(":1.1", 11);
  EXPECT_THAT(members.left(":1.1"), IsEmpty());
}

TEST(BusMembers, aProcessDepartsWithItsLastConnection) {
  BusMembers members;
  for (const char* connection : {":1.1", ":1.2", ":1.3", ":1.4"}) {
    members.arrived(connection);
    members.hasProcess(connection, 11);
  }
  members.hasProcess(":1.4", 44);
  for (const char* connection : {":1.1", ":1.2", ":1.4"}) members.hasName(connection, safari);
  EXPECT_THAT(members.left(":1.1"), IsEmpty());
  EXPECT_THAT(members.left(":1.2"), ElementsAre(FieldsAre(safari, 11))) << "the third does not have the name";
  EXPECT_THAT(members.left(":1.3"), IsEmpty());
  EXPECT_THAT(members.left(":1.4"), ElementsAre(FieldsAre(safari, 44)));
}

TEST(BusMembers, doesNotMergeConnectionsOfUnknownProcesses) {
  BusMembers members;
  for (const char* connection : {":1.1", ":1.2"}) {
    members.arrived(connection);
    members.hasName(connection, safari);
  }
  EXPECT_THAT(members.processesWith(safari), ElementsAre(-1, -1));
  EXPECT_THAT(members.left(":1.1"), ElementsAre(FieldsAre(safari, -1)));
  EXPECT_THAT(members.left(":1.2"), ElementsAre(FieldsAre(safari, -1)));
}

TEST(BusMembers, ignoresFactsAboutAbsentConnections) {
  BusMembers members;
  members.hasName(":1.1", safari);
  members.hasProcess(":1.1", 11);
  EXPECT_THAT(members.left(":1.1"), IsEmpty());
  members.arrived(":1.1");
  EXPECT_THAT(members.left(":1.1"), IsEmpty());
}

TEST(BusMembers, ignoresASecondArrival) {
  BusMembers members;
  members.arrived(":1.1");
  members.hasName(":1.1", safari);
  members.hasProcess(":1.1", 11);
  members.arrived(":1.1");
  members.arrived(":1.2");
  members.hasName(":1.2", safari);
  members.hasProcess(":1.2", 22);
  EXPECT_THAT(members.processesWith(safari), UnorderedElementsAre(11, 22));
  EXPECT_THAT(members.processesWith("com.apple.Mail"), IsEmpty());
}

}  // namespace
