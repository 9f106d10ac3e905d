// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The model's books find each broken promise, and report nothing else.
#include "ModelBooks.h"

#include <gtest/gtest.h>

namespace torture {
namespace {

using What = ModelBooks::What;

class Books : public ::testing::Test {
 protected:
  Books() { mBooks.beginRound(); }
  ModelBooks::Call begin(What what, bool inside = false) {
    return mBooks.begin(what, kLce, inside);
  }
  void end(const ModelBooks::Call& call, bool accepted = true) {
    mBooks.end(call, accepted ? 0 : -5, accepted);
  }
  void call(What what, bool accepted = true, bool inside = false) {
    end(begin(what, inside), accepted);
  }
  int registering(What what, Kind kind, bool accepted = true) {
    const int account = mBooks.open(kind);
    mBooks.end(begin(what), accepted ? 0 : -5, accepted, kind, account);
    return account;
  }
  int enable() { return registering(What::Enable, kLceStatus); }
  void callback(Kind kind, int account, int value = STATUS_SUCCESS, uint64_t connection = 0) {
    mBooks.beginCallback(kind, account, value, connection, false);
    mBooks.endCallback(kind, account);
  }
  void expectMistake(const std::string& part) {
    const auto mistakes = mBooks.mistakes();
    ASSERT_EQ(1u, mistakes.size());
    EXPECT_NE(std::string::npos, mistakes[0].find(part)) << mistakes[0];
  }
  void expectNone() { EXPECT_TRUE(mBooks.mistakes().empty()) << mBooks.mistakes().front(); }

  ModelBooks mBooks;
};

TEST_F(Books, AWholePeriodIsInOrder) {
  const int status = enable();
  callback(kLceStatus, status);
  const int criteria = registering(What::Request, kLceCriteria);
  callback(kLceCriteria, criteria);
  call(What::Disable);
  call(What::Disable, false);
  call(What::Request, false);
  expectNone();
}

TEST_F(Books, ACallbackThatOutlivesDisableIsNoticed) {
  const int status = enable();
  const auto disabling = begin(What::Disable);
  mBooks.beginCallback(kLceStatus, status, STATUS_SUCCESS, 0, false);
  end(disabling);
  expectMistake("still runs after disable");
}

TEST_F(Books, ACallbackAfterDisableIsNoticed) {
  const int status = enable();
  call(What::Disable);
  callback(kLceStatus, status);
  expectMistake("called after disable");
}

TEST_F(Books, AFunctionRegisteredBesideADisableMayGoOn) {
  const int first = enable();
  const auto disabling = begin(What::Disable);
  const int second = enable();
  callback(kLceStatus, first);
  end(disabling);
  callback(kLceStatus, second);
  expectNone();
}

TEST_F(Books, AThreadMayBeAboutToCallOnceWhenACallbackDisables) {
  const int status = enable();
  call(What::Disable, true, true);
  callback(kLceStatus, status);
  expectNone();
  callback(kLceStatus, status);
  expectMistake("although disabled inside");
}

TEST_F(Books, AReplacedFunctionIsCalledOnceMoreAtMost) {
  enable();
  const int first = registering(What::Request, kLceReport);
  registering(What::Request, kLceReport);
  callback(kLceReport, first);
  expectNone();
  callback(kLceReport, first);
  expectMistake("although replaced");
}

TEST_F(Books, TheFunctionOfARefusedCallIsNotCalled) {
  const int last = registering(What::Request, kLceLast, false);
  callback(kLceLast, last);
  expectMistake("refused call was called");
}

TEST_F(Books, CriteriaAreAnsweredOnce) {
  enable();
  const int criteria = registering(What::Request, kLceCriteria);
  callback(kLceCriteria, criteria);
  callback(kLceCriteria, criteria);
  expectMistake("answered twice");
}

TEST_F(Books, AnEnabledServiceTakesRequests) {
  enable();
  call(What::Request, false);
  expectMistake("enabled: result -5");
}

TEST_F(Books, ADisabledServiceTakesNone) {
  call(What::Request);
  expectMistake("disabled: result 0");
}

TEST_F(Books, AServiceBetweenTheTwoMayDoEither) {
  enable();
  const auto disabling = begin(What::Disable);
  call(What::Request);
  call(What::Request, false);
  end(disabling);
  const auto enabling = begin(What::Enable);
  call(What::Disable, false);
  end(enabling);
  expectNone();
}

TEST_F(Books, AnEnabledServiceCanBeDisabled) {
  enable();
  call(What::Disable, false);
  expectMistake("enabled, was refused");
}

TEST_F(Books, NobodyHearsOfALossWithoutHarm) {
  const int status = enable();
  mBooks.harm();
  callback(kLceStatus, status, STATUS_SERVICE_DOWN);
  expectNone();
  mBooks.beginRound();
  callback(kLceStatus, enable(), STATUS_SERVICE_DOWN);
  expectMistake("for nothing");
}

TEST_F(Books, ALateCallCountsUnlessTheMachineIsToBlame) {
  auto disabling = begin(What::Disable);
  disabling.began -= std::chrono::seconds(10);
  end(disabling, false);
  mBooks.starve();
  mBooks.endRound();
  expectNone();
  mBooks.beginRound();
  disabling = begin(What::Disable);
  disabling.began -= std::chrono::seconds(10);
  end(disabling, false);
  mBooks.endRound();
  expectMistake("disable of Lce took 10");
}

TEST_F(Books, AReportOfAnEarlierPeriodIsNoticed) {
  enable();
  mBooks.connectionStands(1);
  call(What::Disable);
  enable();
  const int report = registering(What::Request, kLceReport);
  callback(kLceReport, report, 0, 1);
  expectMistake("of an earlier period");
}

TEST_F(Books, RequestsArriveOnceAndInOrder) {
  enable();
  const auto made = [this](bool accepted) {
    const uint32_t tag = mBooks.tag();
    const auto request = begin(What::Request);
    end(request, accepted);
    mBooks.tagged(tag, request, accepted);
    return tag;
  };
  const uint32_t first = made(true);
  const uint32_t second = made(true);
  uint64_t latest = 0;
  mBooks.arrived(first, latest);
  mBooks.arrived(second, latest);
  expectNone();
  mBooks.arrived(second, latest);
  expectMistake("came twice");
}

TEST_F(Books, ALaterRequestDoesNotOvertake) {
  enable();
  uint32_t tags[2];
  for (uint32_t& tag : tags) {
    tag = mBooks.tag();
    const auto request = begin(What::Request);
    end(request);
    mBooks.tagged(tag, request, true);
  }
  uint64_t latest = 0;
  mBooks.arrived(tags[1], latest);
  mBooks.arrived(tags[0], latest);
  expectMistake("after a later one");
}

}  // namespace
}  // namespace torture
