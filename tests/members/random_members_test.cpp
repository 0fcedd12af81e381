// Objects made at random, in rows of all parts, explained and taken back member by member.
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/taking_back.h"

#include "json/equality.h"
#include "json/pointer.h"
#include "members/explained_text.h"
#include "objects/named_places.h"
#include "objects/schema_lookup.h"
#include "support/next_boot_fixture.h"
#include "support/random_objects.h"
#include "support/sanitized.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Parsed;
using TestSupport::Raised;

class RandomMembers : public TestSupport::NextBootFixture {
 protected:
  RandomMembers() {
    InstallType(host_, TestSupport::kManyWaysType);
    type_ = FindSchema(id_);
    place_ = type_->GetSchemaPlace();
  }

  // Some writes of every part, each refused or not; perhaps something that waits.
  void Write() {
    store_->Delete(id_);
    for (int i = 0; i < 5; ++i) {
      const auto object = Object(id_, objects_.Make(place_, "i"));
      Raised([&] {
        switch (random_.Below(4)) {
          case 0:
            store_->Update(object, random_.OneIn(2) ? EXTERNAL : AUTO_CONFIG);
            break;
          case 1:
            store_->SetUserData(object, AUTO_CONFIG);
            break;
          case 2:
            store_->SetCachedData(object);
            break;
          default:
            store_->Set(object, EXTERNAL);
        }
      });
    }
    if (random_.OneIn(3)) {
      database_.Run(
          "UPDATE Config SET DesiredValue = UserValue, UserValue = AutoConfValue WHERE Name = "
          "'ways'");
    }
    if (random_.OneIn(3)) {
      database_.Run("UPDATE Config SET Success = 0 WHERE Name = 'ways'");
    }
  }
  static std::string Text(const Json::Value& value) {
    std::string text;
    Json::Serialize(value, text);
    return text;
  }
  static bool HoldsScalars(const Json::Value& value) {
    bool holds = !Json::IsContainer(value) && !value.IsNull();
    if (value.IsArray()) {
      for (const Json::Value& element : value.GetArray()) {
        holds = holds || HoldsScalars(element);
      }
    } else if (value.IsObject()) {
      for (const auto& member : value.GetObject()) {
        holds = holds || HoldsScalars(member.value);
      }
    }
    return holds;
  }
  static bool Same(const std::optional<std::string>& a, const std::optional<std::string>& b) {
    const auto none = [](const auto& text) { return !text || *text == "null"; };
    return none(a) || none(b) ? none(a) == none(b) : Json::Equal(Parsed(*a), Parsed(*b));
  }

  Id id_{"ways", "test", "tarn", "i"};
  SchemaHandle type_;
  Json::SchemaPlace place_;
  TestSupport::Random random_;
  TestSupport::RandomObjects objects_{random_, 9};
};

TEST_F(RandomMembers, AllThatIsReadIsToldAndNothingElse) {
  for (int round = 0; round < TestSupport::Rounds(300); ++round) {
    Write();
    const auto read = store_->Get(id_);
    Json::Document data = Parsed(read ? read->GetData() : "{}");
    const ObjectExplanation object = ExplainObject(id_);
    // Backwards, as ids come before what is found by them.
    for (auto member = object.members.rbegin(); member != object.members.rend(); ++member) {
      const auto names = *Json::ParsePointer(member->pointer);
      const Json::Value* there = FindByIds(data, place_, names);
      if (member->isExpanded) {
        continue;
      }
      ASSERT_TRUE(Same(member->value, there ? std::optional(Text(*there)) : std::nullopt))
          << database_.Rows() << "\n"
          << TestSupport::Line(*member);
      const auto isRead = [](const MemberPart& held) { return held.role == PartRole::READ; };
      EXPECT_EQ(std::any_of(member->held.begin(), member->held.end(), isRead), there != nullptr)
          << database_.Rows() << "\n"
          << TestSupport::Line(*member);
      EraseByIds(data, place_, names);
    }
    ASSERT_FALSE(HoldsScalars(data)) << database_.Rows() << "\n" << Text(data);
    // And the boot does what was said of it.
    SetBootStatus(id_, true);
    for (const ExplainedMember& member : object.members) {
      const auto now = ExplainObject(id_, member.pointer).members;
      if (!member.isExpanded && (now.empty() || !now[0].isExpanded)) {
        ASSERT_TRUE(Same(member.changesAtBoot ? member.afterBoot : member.value,
                         now.empty() ? std::nullopt : now[0].value))
            << TestSupport::Line(member);
      }
    }
  }
}

TEST_F(RandomMembers, WhatIsUnsetReadsAsWhatItHid) {
  int written = 0;
  for (int round = 0; round < TestSupport::Rounds(300); ++round) {
    Write();
    SetBootStatus(id_, true);
    const ObjectExplanation object = ExplainObject(id_);
    if (object.members.empty()) {
      continue;
    }
    const ExplainedMember& member = object.members[random_.Below(object.members.size())];
    const std::string before = database_.Rows();
    UnsetResult result;
    const std::string raised = Raised([&] { result = UnsetMembers(id_, {member.pointer}); });
    if (!result.isWritten) {
      EXPECT_EQ(database_.Rows(), before) << raised;
      continue;
    }
    ++written;
    EXPECT_EQ(ExplainObject(id_).revision, object.revision + 1);
    for (const ExplainedMember& now : ExplainObject(id_, member.pointer).members) {
      for (const MemberPart& held : now.held) {
        EXPECT_EQ(held.part, ConfigPart::AUTOMATIC) << before << "\n" << TestSupport::Line(now);
      }
    }
    // Nothing else reads otherwise, but for what was empty without it.
    for (const ExplainedMember& other : object.members) {
      if (!other.pointer.starts_with(member.pointer) && !other.isExpanded && other.value != "{}" &&
          other.value != "[]") {
        const auto now = ExplainObject(id_, other.pointer).members;
        EXPECT_TRUE(now.empty() || now[0].isExpanded ? !other.value
                                                     : Same(other.value, now[0].value))
            << before << "\n"
            << TestSupport::Line(member) << "\n"
            << TestSupport::Line(other);
      }
    }
  }
  EXPECT_GT(written, TestSupport::Rounds(300) / 20);
}

}  // namespace
}  // namespace TarnConfigStore
