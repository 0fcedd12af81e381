// What the library says of objects with secrets in them: exceptions, findings, reports, log lines.
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/dry_run.h"

#include "support/next_boot_fixture.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

// Part of every secret, and of nothing else.
constexpr const char* kMark = "8675309";

// A type with a secret in each position, that waits for the next boot or not. With `fits` it takes
// what is given below.
std::string Type(const std::string& key, bool isSecret, bool fits) {
  const std::string secret = isSecret ? R"("secret":true)" : R"("x-open":true)";
  const auto rules = [&](const char* text) { return fits ? secret : secret + "," + text; };
  return R"({"component": "tarn", "group": "test", "key": ")" + key + R"(", "version": ")" +
         (fits ? "1.0" : "2.0") + R"(", "schema": { "type":"object", "properties":{
    "name":{"type":"string","instanceId":true},
    "password":{)" +
         rules(R"("type":"string","maxLength":4)") + R"(},
    "pin":{"$ref":"#/definitions/pin"},
    "master":{"vital":true,)" +
         rules(R"("format":"ipv4")") + R"(},
    "session":{"cached":true,)" +
         rules(R"("type":"boolean")") + R"(},
    "keys":{"type":"array","items":{)" +
         rules(R"("pattern":"^q")") + R"(}},
    "users":{"type":"array","items":{"type":"object","properties":{
      "id":{"type":"string","instanceId":true},"key":{)" +
         rules(R"("enum":["8675309a","b"])") + R"(}}}},
    "rules":{"type":"array","items":{"type":"object","generatedInstanceId":true,
      "properties":{"code":{)" +
         rules(R"("const":"8675309b")") + R"(}}}},
    "token":{"type":"object",)" +
         rules(R"("properties":{"user":{"type":"string"}})") + R"(,
      "additionalProperties":)" +
         (fits ? "true" : R"({"type":"boolean"})") + R"(}},
    "definitions":{"pin":{)" +
         rules(R"("type":"integer","maximum":9999)") + R"(}}}})";
}

class Secrets : public TestSupport::NextBootFixture {
 protected:
  static constexpr const char* kUsers = R"("password":"8675309","pin":8675309,
      "keys":["8675309","8675309"],"users":[{"id":"u","key":"8675309"}],"rules":[{"code":"8675309c"}],
      "token":{"user":8675309,"8675309":"8675309","list":[],"8675309x":{"8675309":{}}})";

  static Id At(const std::string& instance) { return {"keys", "test", "tarn", instance}; }
  static ObjectHandle Make(const std::string& instance, const std::string& members) {
    return Object(At(instance), Named(instance, members));
  }
  void Install(bool isSecret, bool fits) {
    const std::string type = Type("keys", isSecret, fits);
    for (const std::string& text : {type, TestSupport::Staged(type, "staged")}) {
      TestSupport::WriteFile(host_.Root() + "/type.json", text);
      for (const bool force : {false, true}) {
        for (const TypeReport& report :
             InstallTypes({host_.Root() + "/type.json"}, {.force = force})) {
          Tell(report.errors);
          Tell(report.warnings);
          for (const Misfit& misfit : report.misfits) {
            Tell({{misfit.pointer, misfit.error}});
          }
        }
      }
    }
  }
  void Tell(const std::vector<ErrorInfo>& findings) {
    for (const ErrorInfo& finding : findings) {
      told_ += "  " + finding.field + ": " + finding.error + "\n";
    }
  }
  void Tell(const DocumentReport& report) { told_ += report.ToJson() + "\n"; }
  void Call(const char* name, const std::function<void()>& call) {
    const std::string raised = Raised(call, true);
    told_ += std::string(name) + ": " + raised + "\n";
    refused_ += raised == "nothing" ? 0 : 1;
  }

  void Write(const std::string& members) {
    const auto make = [&] { return Make("a", members); };
    for (const auto context : {EXTERNAL, AUTO_CONFIG}) {
      Call("Set", [&] { store_->Set(make(), context); });
      Call("SetUserData", [&] { store_->SetUserData(make(), context); });
      Call("Update", [&] { store_->Update(make(), context); });
    }
    Call("SetVitalData", [&] { store_->SetVitalData(make()); });
    Call("SetCachedData", [&] { store_->SetCachedData(make()); });
    Call("SetInstances", [&] { store_->SetInstances(List(make()), EXTERNAL); });
    Call("Partial", [&] { SetPartialBootStatus(make()); });
    Call("FindingsOfWrite", [&] { Tell(FindingsOfWrite(make(), WriteKind::SET)); });
    Call("validateObject", [&] {
      std::vector<ErrorInfo> errors;
      validateObject(make(), ACTION_SET, errors, "");
      Tell(errors);
    });
    Call("stage", [&] {
      nextBoot_->Set(Object({"staged-keys", "test", "tarn", "a"}, Named("a", members)));
    });
    const std::string document =
        R"({"format":1,"config":{"tarn":{"test":{"keys":[)" + Named("a", members) + "]}}}}";
    for (const bool check : {true, false}) {
      for (const auto mode : {ImportMode::MERGE, ImportMode::REPLACE_NAMED}) {
        Call("import", [&] { Tell(ImportConfig(document, {.mode = mode, .check = check})); });
      }
      Call("apply", [&] { Tell(ApplyConfig(document, {.prune = true, .check = check})); });
    }
    Call("drift", [&] {
      for (const DriftObject& object : ComputeDrift(document, {})) {
        told_ += object.ToJson();
      }
    });
  }

  void Read() {
    for (const char* condition : {R"({"password":"8675309z"})", R"({"token":{"8675309":1}})",
                                  R"({"users":[{"key":"8675309z"}]})"}) {
      Call("filter", [&] { store_->GetInstances(Filter(At(""), condition)); });
      Call("stageFilter", [&] { nextBoot_->DeleteInstances(Filter(At(""), condition)); });
    }
    Call("typed", [&] {
      int number = 0;
      Make("a", kUsers)->GetValue("password", &number);
    });
    for (const char* broken : {R"({"password":"8675309)", R"({"pin":8675309e9999})",
                               R"({"token":{"8675309":1,"8675309":2}})"}) {
      Call("SetData", [&] { Make("a", "")->SetData(broken); });
      Call("document", [&] {
        ComputeDrift(R"({"format":1,"config":{"tarn":{"test":{"keys":[)" + std::string(broken), {});
      });
      PutRow(At("b"), broken, "", "", "", "", 1);
      Call("Get", [&] { store_->Get(At("b")); });
      Call("instances", [&] { store_->GetInstances(Filter(At(""))); });
    }
    database_.Run("DELETE FROM Config WHERE Identifier = 'b'");
  }

  // Writes of what fits, where the store fails: any of its operations, and the engine by itself.
  void WriteToFailingStore() {
    for (const Operation fails : {Operation::GET_CONNECTION, Operation::BEGIN, Operation::PREPARE,
                                  Operation::EXECUTE, Operation::COMMIT}) {
      Fail(fails);
      Write(kUsers);
      DBStore::testing::SetHook({});
    }
    for (const char* table : {"Config", "DesiredUserConfig"}) {
      database_.Run(std::string("CREATE TRIGGER Fail") + table + " BEFORE INSERT ON " + table +
                    " BEGIN SELECT RAISE(ABORT, 'the engine fails'); END");
    }
    Write(kUsers);
    told_ += "store: " + GetLastStoreError().message + "\n";
    database_.Run("DROP TRIGGER FailConfig; DROP TRIGGER FailDesiredUserConfig");
  }

  // Everything, with types that take the secrets and with types that don't.
  std::string SayEverything(bool isSecret) {
    told_.clear();
    refused_ = 0;
    Install(isSecret, true);
    nextBoot_->Set(Object({"staged-keys", "test", "tarn", "s"}, Named("s", kUsers)));
    PutRow(At("a"), Named("a", kUsers), Named("a", kUsers), Named("a", kUsers),
           Named("a", R"("master":"8675309")"), Named("a", R"("session":"8675309")"), 1);
    Call("take away",
         [&] { store_->Update(Make("a", R"("token":{"8675309":null,"8675309x":{}})"), EXTERNAL); });
    Write(kUsers);
    WriteToFailingStore();
    Install(isSecret, false);
    Write(kUsers);
    Write(std::string(R"("keys":"8675309","users":8675309,"rules":{"code":"8675309"},)") +
          R"("master":"8675309","session":"8675309")");
    Read();
    Call("boot", [&] {
      for (const UnappliedChange& change : ApplyNextBootConfig({.applyRest = true}).staged) {
        Tell(change.findings);
      }
    });
    std::string lines;
    for (const std::string& line : log_.Lines()) {
      lines += line + "\n";
    }
    return told_ + lines;
  }

  // The lines with the mark.
  static std::string Marked(const std::string& text) {
    std::istringstream lines(text);
    std::string marked;
    for (std::string line; std::getline(lines, line);) {
      marked += line.find(kMark) != std::string::npos ? line + "\n" : "";
    }
    return marked;
  }

  std::string told_;
  int refused_ = 0;
};

TEST_F(Secrets, AreToldByNoOperation) {
  const std::string said = SayEverything(true);
  EXPECT_EQ(Marked(said), "");
  EXPECT_GT(refused_, 100) << said;
  EXPECT_NE(said.find("store: "), said.find("store: \n"));
  EXPECT_NE(said.find("the engine fails"), std::string::npos);
  for (const char* expected :
       {"/pin: 9999 is the largest value allowed, found ***", "/token/***: expected true or false",
        "/users/0/key: expected one of the values that the type allows, found ***",
        "/token/***: cannot be taken away", "line 1, column 32: a member is named twice"}) {
    EXPECT_NE(said.find(expected), std::string::npos) << expected << "\n" << said;
  }
}

TEST_F(Secrets, WouldBeToldIfTheyWereNone) {
  const std::string marked = Marked(SayEverything(false));
  for (const char* way : {"Set: ", "Update: ", "stage: ", "apply: ", "  /rules/0/code: ",
                          "import: ", "drift: ", "/token/8675309: cannot be taken away"}) {
    EXPECT_NE(marked.find(way), std::string::npos) << way << "\n" << marked;
  }
}

}  // namespace
}  // namespace TarnConfigStore
