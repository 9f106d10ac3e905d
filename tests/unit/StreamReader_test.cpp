// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Pieces of a stream that arrives in portions of any size; each piece is as from a separate
// receive.
#include "StreamReader.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <numeric>

#include "IpcTestSupport.h"
#include "UniqueFd.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr size_t kLong = 20000;  // more than a reader receives at once

class StreamReaderTest : public ::testing::Test {
 protected:
  static Bytes numbered(size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
  }
  void write(const Bytes& bytes) const { mPair.write(bytes.data(), bytes.size()); }
  Bytes read(size_t size) {
    Bytes bytes(size);
    const ssize_t got = mReader.read(bytes.data(), size);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }
  void expectEnd() {
    unsigned char byte = 0;
    EXPECT_EQ(0, mReader.read(&byte, 1));
    EXPECT_EQ(0, mReader.read(&byte, 1));  // and stays there
  }
  void expectError(int error) {
    unsigned char byte = 0;
    errno = 0;
    EXPECT_EQ(-1, mReader.read(&byte, 1));
    EXPECT_EQ(error, errno);
  }
  // The receiver does not read the data, so the sender gets a reset.
  void reset() {
    const unsigned char unread = 0;
    ASSERT_EQ(1, send(mOurs.get(), &unread, 1, MSG_NOSIGNAL));
    mPair.closePeer();
  }

  ipctest::SocketPair mPair;
  const UniqueFd mOurs{mPair.ours};
  StreamReader mReader{mPair.ours};
};

TEST_F(StreamReaderTest, PiecesOfOnePortionAreTakenApart) {
  write(numbered(10));
  EXPECT_EQ((Bytes{1, 2, 3}), read(3));
  EXPECT_EQ((Bytes{4}), read(1));
  EXPECT_EQ((Bytes{5, 6, 7, 8, 9, 10}), read(6));
}

TEST_F(StreamReaderTest, WhatIsThereNeedsNoFurtherReceive) {
  write(numbered(10));
  read(1);
  ASSERT_EQ(0, fcntl(mPair.ours, F_SETFL, O_NONBLOCK));
  unsigned char byte = 0;
  EXPECT_EQ(-1, recv(mPair.ours, &byte, 1, 0));  // the reader has received all of it
  EXPECT_EQ(9u, read(9).size());
  expectError(EAGAIN);
}

TEST_F(StreamReaderTest, PieceOfManyPortionsIsPutTogether) {
  const Bytes all = numbered(7);
  for (const unsigned char byte : all) write({byte});
  EXPECT_EQ(all, read(7));
}

TEST_F(StreamReaderTest, LongPieceIsPutTogether) {
  const Bytes all = numbered(kLong);
  write(all);
  write({1, 2});
  EXPECT_EQ(all, read(kLong));
  EXPECT_EQ((Bytes{1, 2}), read(2));
}

TEST_F(StreamReaderTest, LongPieceBehindAShortOneIsPutTogether) {
  const Bytes all = numbered(kLong + 1);
  write(all);
  EXPECT_EQ(Bytes{1}, read(1));
  EXPECT_EQ(Bytes(all.begin() + 1, all.end()), read(kLong));
}

TEST_F(StreamReaderTest, EndWithinAPieceGivesWhatCame) {
  write(numbered(5));
  mPair.closePeer();
  EXPECT_EQ((Bytes{1, 2}), read(2));
  errno = 77;
  EXPECT_EQ((Bytes{3, 4, 5}), read(4));
  EXPECT_EQ(77, errno);
  expectEnd();
}

TEST_F(StreamReaderTest, EndWithinALongPieceGivesWhatCame) {
  write(numbered(kLong));
  mPair.closePeer();
  EXPECT_EQ(Bytes{1}, read(1));
  EXPECT_EQ(kLong - 1, read(2 * kLong).size());
  expectEnd();
}

TEST_F(StreamReaderTest, EndBetweenPiecesIsTheEnd) {
  write(numbered(2));
  mPair.closePeer();
  EXPECT_EQ((Bytes{1, 2}), read(2));
  expectEnd();
}

TEST_F(StreamReaderTest, ResetComesBehindWhatWasSentBefore) {
  write(numbered(2));
  reset();
  EXPECT_EQ((Bytes{1, 2}), read(2));
  expectError(ECONNRESET);
  expectEnd();
}

TEST_F(StreamReaderTest, ResetWithinAPieceIsOnlyItsEnd) {
  write(numbered(2));
  reset();
  errno = 77;
  EXPECT_EQ((Bytes{1, 2}), read(3));
  EXPECT_EQ(77, errno);
  expectEnd();
}

// The kernel's receive for comparison: the two tests above expect the same from the reader.
TEST_F(StreamReaderTest, ReceiveOfTheKernelTakesAResetForAnEnd) {
  write(numbered(2));
  reset();
  Bytes bytes(3);
  errno = 77;
  EXPECT_EQ(2, recv(mPair.ours, bytes.data(), bytes.size(), MSG_WAITALL));
  EXPECT_EQ(77, errno);
  EXPECT_EQ(0, recv(mPair.ours, bytes.data(), bytes.size(), MSG_WAITALL));
}

TEST_F(StreamReaderTest, NothingThereIsAnErrorForASocketThatDoesNotWait) {
  ASSERT_EQ(0, fcntl(mPair.ours, F_SETFL, O_NONBLOCK));
  expectError(EAGAIN);
  write(numbered(1));
  EXPECT_EQ(Bytes{1}, read(2));
  expectError(EAGAIN);
  write(numbered(2));  // an error is not the end of the stream
  EXPECT_EQ((Bytes{1, 2}), read(2));
}

TEST(StreamReaderAloneTest, DescriptorThatIsNoSocketIsAnError) {
  const UniqueFd fd(eventfd(0, EFD_CLOEXEC));
  StreamReader reader(fd.get());
  unsigned char byte = 0;
  EXPECT_EQ(-1, reader.read(&byte, 1));
  EXPECT_EQ(ENOTSOCK, errno);
}

}  // namespace
