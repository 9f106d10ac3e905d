// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/TraceMessage.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>

#include "TraceTables.h"

namespace orbsim {
namespace {

using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;
using WireType = WireFormatLite::WireType;

// Decodes one message and its submessages. The tables have only a few levels, so the recursion
// depth is bounded, also for groups.
class Decoder {
 public:
  Decoder(CodedInputStream& input, std::string& reason) : mInput(input), mReason(reason) {}

  // `path` is the name of the message in a reason.
  bool read(const MessageTable& table, const std::string& path, TraceMessage& message) {
    bool whole = true;
    while (whole && mInput.BytesUntilLimit() > 0) {
      const uint32_t tag = mInput.ReadTag();
      const uint32_t number = static_cast<uint32_t>(WireFormatLite::GetTagFieldNumber(tag));
      if (number == 0 || (tag & 7) > WireFormatLite::WIRETYPE_FIXED32 ||
          (tag & 7) == WireFormatLite::WIRETYPE_END_GROUP) {
        mReason = path + " has bytes that are not a field";
        return false;
      }
      whole = readField(table, path, tag, message);
    }
    if (whole) addDefaults(table, message);
    std::stable_sort(message.fields.begin(), message.fields.end(),
                     [](const TraceField& a, const TraceField& b) {
                       const bool aKnown = *a.name != '\0', bKnown = *b.name != '\0';
                       return aKnown != bKnown ? aKnown : a.number < b.number;
                     });
    return whole;
  }

 private:
  bool readField(const MessageTable& table, const std::string& path, uint32_t tag,
                 TraceMessage& message) {
    const uint32_t number = static_cast<uint32_t>(WireFormatLite::GetTagFieldNumber(tag));
    const WireType type = WireFormatLite::GetTagWireType(tag);
    const FieldTable* const field =
        std::find_if(table.begin(), table.end(),
                     [number](const FieldTable& each) { return each.number == number; });
    if (field != table.end() && type == wireTypeOf(*field)) {
      if (table.oneof) removeOthers(number, message);
      return readKnown(*field, path, message) || cut(path, field->name);
    }
    if (field != table.end() && field->repeated &&
        type == WireFormatLite::WIRETYPE_LENGTH_DELIMITED)
      return readPacked(*field, message) || cut(path, field->name);
    TraceUnknown unknown;
    if (!readUnknown(tag, unknown)) return cut(path, "field " + std::to_string(number));
    message.fields.push_back({number, "", false, {std::move(unknown)}});
    return true;
  }

  bool cut(const std::string& path, const std::string& field) {
    if (mReason.empty()) mReason = path + "." + field + " is cut or damaged";
    return false;
  }

  static WireType wireTypeOf(const FieldTable& field) {
    const bool hasLength = field.type == TraceType::kString || field.type == TraceType::kMessage;
    return hasLength ? WireFormatLite::WIRETYPE_LENGTH_DELIMITED : WireFormatLite::WIRETYPE_VARINT;
  }

  static void removeOthers(uint32_t number, TraceMessage& message) {
    auto& fields = message.fields;
    fields.erase(std::remove_if(fields.begin(), fields.end(),
                                [number](const TraceField& each) {
                                  return *each.name != '\0' && each.number != number;
                                }),
                 fields.end());
  }

  // The field of that number in the message; it is added if it does not exist.
  static TraceField& entry(const FieldTable& field, TraceMessage& message) {
    for (TraceField& each : message.fields) {
      if (each.number == field.number && *each.name != '\0') return each;
    }
    message.fields.push_back({field.number, field.name, field.repeated, {}});
    return message.fields.back();
  }

  bool readKnown(const FieldTable& field, const std::string& path, TraceMessage& message) {
    if (field.type == TraceType::kMessage) {
      // Several messages of one field are merged.
      TraceField& target = entry(field, message);
      if (target.values.empty()) target.values.emplace_back(TraceMessage{});
      return readMember(field, path, std::get<TraceMessage>(target.values.front()));
    }
    TraceValue value;
    if (field.type == TraceType::kString) {
      std::string text;
      if (!readBytes(text)) return false;
      value = std::move(text);
    } else {
      uint64_t number = 0;
      if (!mInput.ReadVarint64(&number)) return false;
      value = numberOf(field, number);
    }
    TraceField& target = entry(field, message);
    if (!field.repeated) target.values.clear();
    target.values.push_back(std::move(value));
    return true;
  }

  bool readMember(const FieldTable& field, const std::string& path, TraceMessage& message) {
    uint32_t length = 0;
    if (!readLength(length)) return false;
    const auto limit = mInput.PushLimit(static_cast<int>(length));
    const bool whole = read(*field.message, path + "." + field.name, message);
    mInput.PopLimit(limit);
    return whole;
  }

  bool readPacked(const FieldTable& field, TraceMessage& message) {
    uint32_t length = 0;
    if (!readLength(length)) return false;
    const auto limit = mInput.PushLimit(static_cast<int>(length));
    TraceField& target = entry(field, message);
    bool whole = true;
    while (whole && mInput.BytesUntilLimit() > 0) {
      uint64_t number = 0;
      whole = mInput.ReadVarint64(&number);
      if (whole) target.values.push_back(numberOf(field, number));
    }
    mInput.PopLimit(limit);
    return whole;
  }

  bool readUnknown(uint32_t tag, TraceUnknown& unknown) {
    uint64_t number = 0;
    uint32_t word = 0;
    std::string bytes;
    switch (WireFormatLite::GetTagWireType(tag)) {
      case WireFormatLite::WIRETYPE_VARINT:
        if (!mInput.ReadVarint64(&number)) return false;
        unknown = {"varint", number};
        return true;
      case WireFormatLite::WIRETYPE_FIXED64:
        if (!mInput.ReadLittleEndian64(&number)) return false;
        unknown = {"fixed64", number};
        return true;
      case WireFormatLite::WIRETYPE_FIXED32:
        if (!mInput.ReadLittleEndian32(&word)) return false;
        unknown = {"fixed32", uint64_t{word}};
        return true;
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
        if (!readBytes(bytes)) return false;
        unknown = {"bytes", Blob(bytes.begin(), bytes.end())};
        return true;
      default:  // a group, which proto3 has not: its end is all there is to look for
        unknown = {"group", Blob{}};
        return WireFormatLite::SkipField(&mInput, tag);
    }
  }

  // A length that fits into the rest of the data.
  bool readLength(uint32_t& length) {
    return mInput.ReadVarint32(&length) &&
           length <= static_cast<uint32_t>(mInput.BytesUntilLimit());
  }

  bool readBytes(std::string& bytes) {
    uint32_t length = 0;
    return readLength(length) && mInput.ReadString(&bytes, static_cast<int>(length));
  }

  // The value for a receiver: only as many low bits as its type has.
  static TraceValue numberOf(const FieldTable& field, uint64_t number) {
    switch (field.type) {
      case TraceType::kBool:
        return number != 0;
      case TraceType::kUint32:
        return number & 0xFFFFFFFF;
      case TraceType::kEnum: {
        const auto value = static_cast<int32_t>(static_cast<uint32_t>(number));
        return TraceEnumerator{value, field.enumerator(value)};
      }
      default:
        return number;
    }
  }

  static bool hasDefault(const FieldTable& field) {
    return !field.repeated && field.type != TraceType::kMessage;
  }

  static void addDefaults(const MessageTable& table, TraceMessage& message) {
    for (const FieldTable& field : table) {
      if (!hasDefault(field)) continue;
      TraceField& target = entry(field, message);
      if (!target.values.empty()) continue;
      target.values.push_back(field.type == TraceType::kString ? TraceValue(std::string())
                                                               : numberOf(field, 0));
    }
  }

  CodedInputStream& mInput;
  std::string& mReason;
};

}  // namespace

const char* traceServiceName(uint32_t sdkType) {
  switch (sdkType) {
    case kSdkTypeLce:
      return "LCE";
    case kSdkTypeLle:
      return "LLE";
    case kSdkTypeLli:
      return "LLI";
    default:
      return nullptr;
  }
}

const char* traceMessageName(Direction direction) {
  return direction == Direction::kToDaemon ? "ServiceMsg" : "ClientMsg";
}

bool decodeTraceMessage(uint32_t sdkType, Direction direction, const Blob& blob,
                        TraceMessage& message, std::string& reason) {
  reason.clear();
  const MessageTable* const table = traceTable(sdkType, direction);
  if (table == nullptr) {
    reason = "no such service";
    return false;
  }
  const int size = static_cast<int>(blob.size());
  CodedInputStream input(blob.data(), size);
  (void)input.PushLimit(size);
  return Decoder(input, reason).read(*table, table->name, message);
}

}  // namespace orbsim
