#include "tests/platform/linux/session/bus_client.h"

#include <gtest/gtest.h>

BusClient::BusClient() {
  sd_bus* bus = nullptr;
  EXPECT_GE(sd_bus_open_user(&bus), 0);
  bus_.reset(bus);
  const char* name = nullptr;
  EXPECT_GE(sd_bus_get_unique_name(bus, &name), 0);  // waits for the bus to reply
}

BusClient::BusClient(const std::string& address) {
  sd_bus* bus = nullptr;
  EXPECT_GE(sd_bus_new(&bus), 0);
  bus_.reset(bus);
  EXPECT_GE(sd_bus_set_address(bus, address.c_str()), 0);
  EXPECT_GE(sd_bus_set_bus_client(bus, 1), 0);
  EXPECT_GE(sd_bus_start(bus), 0);
  const char* name = nullptr;
  EXPECT_GE(sd_bus_get_unique_name(bus, &name), 0);
}

void BusClient::take(const char* name) { EXPECT_GE(sd_bus_request_name(bus(), name, SD_BUS_NAME_QUEUE), 0) << name; }

void BusClient::release(const char* name) { EXPECT_GE(sd_bus_release_name(bus(), name), 0) << name; }
