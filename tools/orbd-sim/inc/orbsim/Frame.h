// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbsim {

using Blob = std::vector<uint8_t>;

// The daemon's endpoint number in the source and destination words of a frame.
constexpr uint64_t kDaemonProcessId = 1;
// The only message that carries service blobs: a 32-bit service number, then the blob.
constexpr uint64_t kSendBlobMessageId = 5;

// Service numbers at the start of a SendBlobMessage payload.
constexpr uint32_t kSdkTypeLce = 7;
constexpr uint32_t kSdkTypeLle = 8;
constexpr uint32_t kSdkTypeLli = 9;

// The six words before every payload, in wire order and in the machine's byte order.
struct Header {
  static constexpr size_t kSize = 48;

  uint64_t source = 0;
  uint64_t destination = 0;
  uint64_t messageId = 0;
  int64_t subsystemId = 0;
  uint64_t sessionId = 0;
  uint64_t payloadLength = 0;
};
static_assert(sizeof(Header) == Header::kSize, "the header is copied to the wire as it stands");

// One received frame.
struct Frame {
  uint32_t sessionId = 0;  // of its connection; the header's word is only the client's claim
  Header header;
  Blob payload;

  Blob bytes() const;        // header and payload as on the wire
  bool isBlob() const;       // a SendBlobMessage with a complete service number
  uint32_t sdkType() const;  // service number of a SendBlobMessage, 0 for any other frame
  Blob blob() const;         // service blob of a SendBlobMessage, empty for any other frame
};

// The bytes of the header followed by the payload; the length word is not changed.
Blob encodeFrame(const Header& header, const Blob& payload);
// The payload of a SendBlobMessage.
Blob encodeBlobPayload(uint32_t sdkType, const Blob& blob);

// Splits a byte stream into frames; the stream may come in any pieces. Owned and used by one
// thread.
class FrameReader {
 public:
  enum class Result { kFrame, kIncomplete, kTooLong };

  // A larger frame is refused, because no client of this daemon needs it.
  static constexpr uint64_t kMaxPayload = uint64_t{64} << 20;

  void feed(const uint8_t* data, size_t size);
  // Gets the next complete frame of the stream in `header` and `payload`.
  Result next(Header& header, Blob& payload);
  // The bytes of an incomplete frame.
  Blob rest() const {
    return Blob(mBytes.begin() + static_cast<std::ptrdiff_t>(mConsumed), mBytes.end());
  }
  size_t buffered() const { return mBytes.size() - mConsumed; }

 private:
  Blob mBytes;
  size_t mConsumed = 0;
};

}  // namespace orbsim
