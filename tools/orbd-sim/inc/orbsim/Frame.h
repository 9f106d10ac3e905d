// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbsim {

using Blob = std::vector<uint8_t>;

// Endpoint number of the daemon in a frame's source and destination words.
constexpr uint64_t kDaemonProcessId = 1;
// The one message that carries service blobs: a 32-bit service number, then the blob.
constexpr uint64_t kSendBlobMessageId = 5;

// Service numbers at the head of a SendBlobMessage payload.
constexpr uint32_t kSdkTypeLce = 7;
constexpr uint32_t kSdkTypeLle = 8;
constexpr uint32_t kSdkTypeLli = 9;

// The six words in front of every payload, in wire order and in the machine's own byte order.
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

// One frame as it was received.
struct Frame {
  uint32_t sessionId = 0;  // of the connection it came on; the header's word is the client's claim
  Header header;
  Blob payload;

  Blob bytes() const;        // header and payload as they were on the wire
  bool isBlob() const;       // a SendBlobMessage with a complete service number
  uint32_t sdkType() const;  // service number of a SendBlobMessage, 0 for any other frame
  Blob blob() const;         // service blob of a SendBlobMessage, empty for any other frame
};

// The header's bytes followed by the payload's; the header's length word is not touched.
Blob encodeFrame(const Header& header, const Blob& payload);
// Payload of a SendBlobMessage.
Blob encodeBlobPayload(uint32_t sdkType, const Blob& blob);

// Cuts a byte stream into frames, in whatever pieces the bytes come. Owned and used by one thread.
class FrameReader {
 public:
  enum class Result { kFrame, kIncomplete, kTooLong };

  // No client of this daemon has reason to send more in one frame.
  static constexpr uint64_t kMaxPayload = uint64_t{64} << 20;

  void feed(const uint8_t* data, size_t size);
  // Takes the next whole frame out of the stream into `header` and `payload`.
  Result next(Header& header, Blob& payload);
  // What is there of a frame that is not whole.
  Blob rest() const {
    return Blob(mBytes.begin() + static_cast<std::ptrdiff_t>(mConsumed), mBytes.end());
  }
  size_t buffered() const { return mBytes.size() - mConsumed; }

 private:
  Blob mBytes;
  size_t mConsumed = 0;
};

}  // namespace orbsim
