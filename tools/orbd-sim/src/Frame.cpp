// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Frame.h"

#include <cstring>

namespace orbsim {

Blob encodeFrame(const Header& header, const Blob& payload) {
  Blob bytes(Header::kSize + payload.size());
  std::memcpy(bytes.data(), &header, Header::kSize);
  if (!payload.empty()) std::memcpy(bytes.data() + Header::kSize, payload.data(), payload.size());
  return bytes;
}

Blob encodeBlobPayload(uint32_t sdkType, const Blob& blob) {
  Blob payload(sizeof(sdkType) + blob.size());
  std::memcpy(payload.data(), &sdkType, sizeof(sdkType));
  if (!blob.empty()) std::memcpy(payload.data() + sizeof(sdkType), blob.data(), blob.size());
  return payload;
}

Blob Frame::bytes() const { return encodeFrame(header, payload); }

bool Frame::isBlob() const {
  return header.messageId == kSendBlobMessageId && payload.size() >= sizeof(uint32_t);
}

uint32_t Frame::sdkType() const {
  uint32_t type = 0;
  if (isBlob()) std::memcpy(&type, payload.data(), sizeof(type));
  return type;
}

Blob Frame::blob() const {
  if (!isBlob()) return {};
  return Blob(payload.begin() + sizeof(uint32_t), payload.end());
}

void FrameReader::feed(const uint8_t* data, size_t size) {
  // Removes consumed bytes once per read instead of once per frame.
  if (mConsumed != 0) {
    mBytes.erase(mBytes.begin(), mBytes.begin() + static_cast<std::ptrdiff_t>(mConsumed));
    mConsumed = 0;
  }
  mBytes.insert(mBytes.end(), data, data + size);
}

FrameReader::Result FrameReader::next(Header& header, Blob& payload) {
  if (buffered() < Header::kSize) return Result::kIncomplete;
  const uint8_t* start = mBytes.data() + mConsumed;
  std::memcpy(&header, start, Header::kSize);
  if (header.payloadLength > kMaxPayload) return Result::kTooLong;
  const size_t length = static_cast<size_t>(header.payloadLength);
  if (buffered() < Header::kSize + length) return Result::kIncomplete;
  payload.assign(start + Header::kSize, start + Header::kSize + length);
  mConsumed += Header::kSize + length;
  return Result::kFrame;
}

}  // namespace orbsim
