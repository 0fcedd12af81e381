// What lies around the values of the stores: layout, rights, left-overs, others at work.
#include "platform/db_testing.h"
#include "platform/host_backup.h"

#include "doctor/doctored_host.h"
#include "support/captured_log.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace TarnConfigStore;

namespace {

class Surroundings : public TestSupport::DoctoredHost {
 protected:
  void TearDown() override { DBStore::testing::SetHook({}); }

  TestSupport::CapturedLog log_;
};

TEST_F(Surroundings, ALayoutThatIsNotWhatItShouldBe) {
  const Rows before = Look();
  const std::vector<std::string> trigger =
      Sql("SELECT sql FROM sqlite_schema WHERE name = 'ConfigModified'");
  struct Case {
    const char* sql;
    const char* kinds;
  };
  const Case cases[] = {
      {"DROP TRIGGER ConfigModified", "trigger-missing"},
      {"DROP TRIGGER ConfigModified; CREATE TRIGGER ConfigModified AFTER DELETE ON Config BEGIN "
       "SELECT 1; END",
       "trigger-changed"},
      // A table that was copied has lost its key, and the index on it.
      {"CREATE TABLE Copy AS SELECT * FROM KeyValue; DROP TABLE KeyValue; ALTER TABLE Copy RENAME "
       "TO "
       "KeyValue",
       "table-changed"},
      {"CREATE TABLE Copy AS SELECT * FROM Config; DROP TABLE Config; ALTER TABLE Copy RENAME TO "
       "Config",
       "trigger-missing table-changed"}};
  for (const Case& damage : cases) {
    SCOPED_TRACE(damage.sql);
    // As programs do that copy tables: names in triggers go on meaning what has the name.
    Sql(std::string("PRAGMA legacy_alter_table=ON; ") + damage.sql);
    std::string found = Kinds(ExamineHost().findings);
    for (std::istringstream kinds(damage.kinds); kinds;) {
      std::string kind;
      kinds >> kind;
      EXPECT_NE(found.find(kind), std::string::npos) << found;
    }
    const Report report = RepairHost({});
    EXPECT_TRUE(report.IsHealthy()) << report.ToJson();
    EXPECT_EQ(Sql("SELECT sql FROM sqlite_schema WHERE name = 'ConfigModified'"), trigger);
    EXPECT_EQ(Look(), before);
  }
  // What is somebody else's stays.
  Sql("ALTER TABLE KeyValue ADD COLUMN Theirs; CREATE VIEW Mine AS SELECT 1");
  EXPECT_EQ(Kinds(ExamineHost().findings), "foreign foreign");
  EXPECT_EQ(Actions(RepairHost({})), "");
}

TEST_F(Surroundings, RightsAndLeftOvers) {
  const std::string draft = types_ + ".new";
  TestSupport::WriteFile(draft, "half of it");
  Sql("SELECT 1");
  chmod(store_.c_str(), 0666);
  chmod(Directory().c_str(), 0777);
  if (geteuid() == 0) {
    ASSERT_EQ(lchown(types_.c_str(), 1234, 1234), 0);
  }
  EXPECT_EQ(Kinds(ExamineHost().findings).substr(0, 13), "rights rights");
  const Report report = RepairHost({});
  EXPECT_TRUE(report.IsHealthy()) << report.ToJson();
  struct stat status {};
  stat(store_.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0660U) << "what the group was given stays";
  stat(Directory().c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0775U);
  const uid_t owner = status.st_uid;
  stat(types_.c_str(), &status);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_FALSE(std::filesystem::exists(draft));
  EXPECT_EQ(Read(report.keepingPlace + "/schema-store-1.new"), "half of it");
  stat(report.keepingPlace.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST_F(Surroundings, AreFoundWhereAnAdministratorPutsThem) {
  const std::string elsewhere = host_.Root() + "/elsewhere";
  std::filesystem::rename(Directory(), elsewhere);
  std::filesystem::create_directory_symlink(elsewhere, Directory());
  EXPECT_EQ(Kinds(ExamineHost().findings), "");
  SqlOfAnother(elsewhere + "/current-store-1", {"DROP TRIGGER ConfigModified"});
  EXPECT_EQ(Actions(RepairHost({})), "backup trigger-missing");
  EXPECT_EQ(Kinds(ExamineHost().findings), "");
}

TEST_F(Surroundings, ARestoreThatWasBegun) {
  const std::string backup = host_.Root() + "/backup";
  const std::string marker = host_.Path(HostPaths::kPendingRestore);
  const Rows before = Look();
  HostBackup::Backup(backup, false);
  Sql("DELETE FROM Config");
  std::filesystem::copy_file(backup, marker);
  EXPECT_EQ(Kinds(ExamineHost().findings), "restore-begun");
  EXPECT_TRUE(std::filesystem::exists(marker)) << "examining completes nothing";
  EXPECT_TRUE(RepairHost({}).IsHealthy());
  EXPECT_EQ(Look(), before);
  // One that can never be completed keeps everybody out.
  TestSupport::WriteFile(marker, "no backup");
  const Report report = RepairHost({});
  EXPECT_TRUE(report.IsHealthy()) << report.ToJson();
  EXPECT_EQ(Look(), before);
  EXPECT_EQ(Read(report.keepingPlace + "/restore-1"), "no backup");
}

TEST_F(Surroundings, NothingIsFoundInAStoreThatOthersWriteMeanwhile) {
  TestSupport::ChildProcess writer([this] {
    TestSupport::Database database(store_);
    for (int i = 0; i < 400; ++i) {
      // Now and then much at once, now and then something that is taken back, and the log anew.
      const std::string sql =
          i % 10 == 0   ? "BEGIN; UPDATE Config SET Revision = Revision + 1; ROLLBACK"
          : i % 10 == 1 ? "UPDATE Config SET Revision = Revision + 1"
          : i % 50 == 2 ? "PRAGMA wal_checkpoint(RESTART)"
                        : "UPDATE Config SET Revision = Revision + 1 WHERE Identifier = 's" +
                              std::to_string(i % 300) + "'";
      database.Run(sql);
    }
    return 0;
  });
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(Kinds(ExamineHost().findings), "");
  }
  EXPECT_EQ(writer.Wait(), 0);
}

TEST_F(Surroundings, WhoMayNotReadThemIsTold) {
  chmod(host_.Root().c_str(), 0755);
  chmod(store_.c_str(), 0);
  chmod(types_.c_str(), 0);
  EXPECT_EQ(TestSupport::AsPlainUser([this] {
              const Report report = ExamineHost();
              // Their modes are wrong as well, and not this user's to change.
              EXPECT_EQ(Kinds(report.findings),
                        "rights rights rights rights not-readable not-readable");
              EXPECT_EQ(Actions(RepairHost({})), "");
              return HasFailure() ? 1 : 0;
            }),
            0);
  EXPECT_TRUE(RepairHost({}).IsHealthy());
}

TEST_F(Surroundings, ExaminingWritesNothingAndWaitsForNobody) {
  const auto snapshot = [this] {
    std::string text;
    for (const auto& file : std::filesystem::directory_iterator(Directory())) {
      const std::string name = file.path().filename().string();
      // The index of the log has nothing of its own: every reader makes it.
      if (name.find("-shm") == std::string::npos && name.find("-wal") == std::string::npos) {
        text += name + " " + Read(file.path().string()) + "\n";
      }
    }
    return text;
  };
  TestSupport::Database writer(host_);
  writer.Run("BEGIN IMMEDIATE; DELETE FROM KeyValue");
  EXPECT_EQ(Kinds(ExamineHost().findings), "");
  EXPECT_EQ(Actions(RepairHost({})), "");
  writer.Run("ROLLBACK");
  Overwrite(store_, PageOfRows(), 4096);
  TestSupport::WriteFile(types_ + ".new", "x");
  const std::string before = snapshot();
  EXPECT_TRUE(ExamineHost().IsDamaged());
  EXPECT_EQ(snapshot(), before);
  // Where nothing can be kept, nothing is changed.
  DBStore::testing::SetHook([](DBStore::testing::Operation, std::string_view step) {
    return step == "making the copy" ? 1 : 0;
  });
  EXPECT_NE(Actions(RepairHost({})).find("databases!"), std::string::npos);
  EXPECT_TRUE(ExamineHost().IsDamaged());
}

}  // namespace
