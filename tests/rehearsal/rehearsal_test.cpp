#include "tarnconfigstore/rehearsal.h"

#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/key_values.h"

#include "documents/documents_fixture.h"

namespace TarnConfigStore {
namespace {

class Rehearsals : public Documents {
 protected:
  Rehearsals() { std::filesystem::create_directory(scratch_); }

  // "~many-switch/s1 /mtu 1>2 user": what was changed, made (+) or deleted (-); "waits" and "settled"
  // with the objects' names; types and entries.
  static std::string Told(const HostDifference& difference) {
    std::string text;
    for (const DriftObject& object : difference.objects) {
      constexpr const char* kKinds[] = {"~", "+", "-"};
      const Id& id = object.GetConfigStoreObjectId();
      text += kKinds[static_cast<int>(object.GetKind())] + id.key + "/" + id.instanceId;
      for (const DriftMember& member : object.GetMembers()) {
        text += " " + member.pointer + " " + member.found.value_or("") + ">" +
                member.expected.value_or("") + " " + member.part;
      }
      text += "\n";
    }
    for (const PendingChange& change : difference.waiting) {
      text += "waits " + change.id.key + "/" + change.id.instanceId + "\n";
    }
    for (const PendingChange& change : difference.settled) {
      text += "settled " + change.id.key + "/" + change.id.instanceId + "\n";
    }
    for (const TypeDifference& type : difference.types) {
      text += "type " + type.type.key + " " + type.before + ">" + type.after + "\n";
    }
    for (const EntryDifference& entry : difference.entries) {
      text += "entry " + entry.key + " " + entry.before + ">" + entry.after + "\n";
    }
    return text;
  }
  // What steps would change, of which the host sees nothing.
  std::string Rehearse(const std::function<void(ConfigStore&)>& steps) {
    std::filesystem::remove_all(scratch_);
    std::filesystem::create_directory(scratch_);
    const std::string before = State();
    std::string told;
    {
      const Rehearsal rehearsal(scratch_);
      steps(*ConfigStore::GetStore(sGlobalNamespace));
      const HostDifference difference = rehearsal.Difference();
      told = Told(difference);
      EXPECT_EQ(difference.IsEmpty(), told.empty());
      EXPECT_EQ(rehearsal.WhyNotWritable(), "");
    }
    EXPECT_EQ(State(), before);
    return told;
  }

  const std::string scratch_ = host_.Path("/scratch");
};

TEST_F(Rehearsals, TellEachPartByItself) {
  PutRow("s1", R"("mtu":1)", "", R"("mtu":3)", R"("serial":"a")", 1);
  PutRow("s2", R"("mtu":1)", "", "", "", 0);
  PutRow("s3", R"("mtu":1)", R"("mtu":2)", "", "", 1);
  EXPECT_EQ(Rehearse([](ConfigStore& store) {
              store.SetUserData(ManyObject("s1", R"("ports":[{"id":"p"}])"), EXTERNAL);
              store.SetUserData(ManyObject("s4", R"("mtu":5)"), AUTO_CONFIG);
              SetBootStatus(Many("s2"), true);
              SetBootStatus(Many("s3"), false);
            }),
            "~many-switch/s1 /ports >[{\"id\":\"p\"}] user /mtu 1> user\n"
            "~many-switch/s2 /mtu >1 user\n"
            "+many-switch/s4 /mtu >5 automatic\n"
            "settled many-switch/s2\nsettled many-switch/s3\n");
  EXPECT_EQ(Rehearse([](ConfigStore& store) {
              store.Delete(Many("s1"));
              store.Update(ManyObject("s3", R"("mtu":1)"), EXTERNAL);
            }),
            "-many-switch/s1 /mtu 1> user /serial \"a\"> vital /mtu 3> automatic\n"
            "settled many-switch/s3\n");
}

TEST_F(Rehearsals, TellWhatWaitsTypesAndEntries) {
  nextBoot_->Set(Mtu("s1", 9));
  nextBoot_->Set(Mtu("s2", 9));
  EXPECT_EQ(Rehearse([](ConfigStore& store) {
              const auto nextBoot = store.GetNextBootStore();
              nextBoot->Set(Mtu("s1", 9));
              nextBoot->Set(Mtu("s2", 8));
              nextBoot->Set(Mtu("s3", 9));
              SetKeyValue("mine", "x");
              SetKeyValue("none", "");
              RemoveType("tarn", "test", "secrets", false);
            }),
            "waits many-switch/s2\nwaits many-switch/s3\ntype secrets 1.0>\nentry mine >x\n");
  EXPECT_EQ(Rehearse([](ConfigStore& store) { store.GetNextBootStore()->Reset(Many("s1")); }),
            "settled many-switch/s1\nsettled many-switch/s2\n");
}

// A type that is installed without its secrets tells them no more than the one before.
TEST_F(Rehearsals, MaskWhatEitherVersionOfATypeCallsASecret) {
  const Id secrets("secrets", "test", "tarn");
  store_->Set(Object(secrets, R"({"password":"old","n":1,"users":[{"id":"u","token":{"t":"q"}}]})"),
              EXTERNAL);
  EXPECT_EQ(Rehearse([&](ConfigStore& store) {
              store.Update(Object(secrets, R"({"password":"new","n":2})"), EXTERNAL);
            }),
            "~secrets/ /password \"***\">\"***\" user /n 1>2 user\n");
  std::string open = kSecretType;
  for (std::size_t at; (at = open.find(R"("secret": true)")) != std::string::npos;) {
    open.replace(at, 14, R"("description": "")");
  }
  open.replace(open.find("1.0"), 3, "1.1");
  EXPECT_EQ(Rehearse([&](ConfigStore& store) {
              TestSupport::InstallType(host_, open);
              store.Update(
                  Object(secrets, R"({"password":"new","users":[{"id":"u","token":{"t":"r"}}]})"),
                  EXTERNAL);
            }),
            "~secrets/ /password \"***\">\"***\" user /users/u/token/t \"***\">\"***\" user\n"
            "type secrets 1.0>1.1\n");
}

// What nobody can tell the secrets of is named, not shown.
TEST_F(Rehearsals, NameRowsOfTypesThatAreGone) {
  database_.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) "
      "VALUES ('tarn','test','gone','','1','{\"password\":\"p\"}')");
  EXPECT_EQ(Rehearse([this](ConfigStore&) {
              TestSupport::Database(host_).Run("DELETE FROM Config WHERE Name = 'gone'");
            }),
            "-gone/\n");
}

TEST_F(Rehearsals, LeaveTheHostInItsPlace) {
  const std::string root = GetHostRoot();
  EXPECT_THROW(Rehearsal(scratch_ + "/none"), ConfigStoreException);
  EXPECT_EQ(GetHostRoot(), root);
  {
    const Rehearsal rehearsal(scratch_);
    EXPECT_NE(GetHostRoot(), root);
    EXPECT_EQ(rehearsal.InWordsOfHost(GetHostRoot() + "/x: " + GetHostRoot()),
              root + "/x: " + root);
  }
  EXPECT_EQ(GetHostRoot(), root);
  const TestSupport::TemporaryHost empty(TestSupport::TemporaryHost::Content::NOTHING);
  std::filesystem::create_directory(empty.Path("/scratch"));
  const Rehearsal rehearsal(empty.Path("/scratch"));
  EXPECT_EQ(InitializeHost().created.size(), 5U);
  EXPECT_TRUE(rehearsal.Difference().IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(empty.Path("/etc")));
}

}  // namespace
}  // namespace TarnConfigStore
