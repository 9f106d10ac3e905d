// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/message_lite.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

// Common functions of the tests of the service messages.
namespace prototest {

using Bytes = std::vector<uint8_t>;

inline Bytes serialize(const google::protobuf::MessageLite& message) {
  Bytes bytes(message.ByteSizeLong());
  EXPECT_TRUE(message.SerializeToArray(bytes.data(), static_cast<int>(bytes.size())));
  return bytes;
}

template <class Message>
Message parse(const Bytes& bytes) {
  Message message;
  EXPECT_TRUE(message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
  return message;
}

template <class Message>
bool parses(const Bytes& bytes) {
  Message message;
  return message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()));
}

// Checks number, name and the reverse for the whole range of an enumeration: names[i] is the name
// of i.
template <class Enum>
void expectEnum(const std::vector<std::string>& names, bool (*isValid)(int),
                const std::string& (*name)(Enum), bool (*parseName)(const std::string&, Enum*)) {
  const int count = static_cast<int>(names.size());
  for (int number = 0; number < count; number++) {
    EXPECT_TRUE(isValid(number)) << number;
    EXPECT_EQ(names[static_cast<size_t>(number)], name(static_cast<Enum>(number)));
    Enum value{};
    ASSERT_TRUE(parseName(names[static_cast<size_t>(number)], &value));
    EXPECT_EQ(number, value);
  }
  for (int number : {-1, count, count + 1}) {
    EXPECT_FALSE(isValid(number)) << number;
    EXPECT_EQ("", name(static_cast<Enum>(number)));
  }
}

}  // namespace prototest

#define EXPECT_ENUM(PACKAGE, ENUM, ...)                                                      \
  prototest::expectEnum<PACKAGE::ENUM>(                                                      \
      {__VA_ARGS__}, PACKAGE::ENUM##_IsValid,                                                \
      [](PACKAGE::ENUM value) -> const std::string& { return PACKAGE::ENUM##_Name(value); }, \
      [](const std::string& text, PACKAGE::ENUM* value) {                                    \
        return PACKAGE::ENUM##_Parse(text, value);                                           \
      })

// The numbers of every service's Status.
#define EXPECT_STATUS_ENUM(PACKAGE)                                                               \
  EXPECT_ENUM(PACKAGE, Status, "INVALID", "SUCCESS", "INVALID_ARG", "INTERNAL_ERROR",             \
              "NOT_SUPPORTED", "INVALID_OPERATION", "SERVICE_UP", "SERVICE_DOWN", "INVALID_SLOT", \
              "RESERVED")
