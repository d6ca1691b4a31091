#include "Stacks.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::readFile;
using test::run;

using Arguments = std::vector<std::string>;

Arguments with(Arguments arguments, const Arguments& more)
{
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

/// Bytes of all files below a folder.
std::uintmax_t sizeOf(const fs::path& folder)
{
  std::uintmax_t bytes = 0;
  std::error_code error; // files come and go
  for (fs::recursive_directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
    if (it->is_regular_file(error)) bytes += it->file_size(error);
  return bytes;
}

/// True when some process holds the lock of a folder.
bool isLocked(const fs::path& folder)
{
  struct stat about {};
  if (stat(folder.c_str(), &about) != 0) return false;
  return readFile("/proc/locks").find(":" + std::to_string(about.st_ino) + " ") != std::string::npos;
}

/// Stops runs in the middle and takes them up.
class Resume : public testing::Test {
protected:
  Outcome expectRun(const Arguments& arguments)
  {
    const Outcome outcome = run({arguments, {}, folder.path()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome;
  }
  Outcome expectRefusal(const Arguments& arguments, const std::string& reason)
  {
    const auto before = folder.contents();
    const Outcome outcome = run({arguments, {}, folder.path()});
    EXPECT_EQ(outcome.status, 1) << testing::PrintToString(arguments);
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(folder.contents(), before);
    return outcome;
  }
  /// Tries something until it meets the run that it is to disturb: on a busy machine one may be at its end,
  /// with status 0, before anybody has looked.
  void untilMet(const std::string& output, const std::function<bool()>& attempt)
  {
    for (int i = 0; i < 20 && !attempt(); ++i) fs::remove_all(folder.file(output));
  }
  /// Leaves what a stopped run of a command keeps.
  void leaveStopped(const Arguments& arguments, const std::string& output)
  {
    Outcome stopped;
    untilMet(output, [&] {
      stopped = test::runUntil(
          {arguments, {}, folder.path()}, [&](pid_t) { return fs::exists(folder.file(output + ".partial")); },
          SIGTERM);
      return stopped.status != 0;
    });
    ASSERT_EQ(stopped.status, 130) << stopped.err;
  }
  /// All that stands in a folder, without what depends on the clock.
  std::map<std::string, std::string> filesOf(const std::string& name)
  {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder.file(name))) {
      const std::string relative = fs::relative(entry.path(), folder.file(name));
      // A kill may leave what was just about to be removed.
      if (!entry.is_regular_file() || relative.starts_with(".zxalign-")) continue;
      std::string bytes = readFile(entry.path());
      if (entry.path().extension() == ".json" && entry.path().stem() == "report") {
        auto report = nlohmann::json::parse(bytes);
        for (auto& pair : report["pairs"]) pair.erase("seconds");
        report["totals"].erase("seconds");
        bytes = report.dump();
      }
      files[relative] = bytes;
    }
    return files;
  }
  /// Runs a command in a folder, stopping it again and again by a signal, when what it keeps has grown by a
  /// random size. Returns how often it was stopped.
  int runWithStops(const std::string& in, const Arguments& arguments, const std::string& output, int signal,
                   std::uintmax_t step)
  {
    const fs::path partial = folder.file(in + "/" + output + ".partial");
    int stops = 0;
    std::uintmax_t limit = 1;
    for (int attempt = 0; attempt < 50; ++attempt) {
      const Arguments now = fs::exists(partial) ? with(arguments, {"--resume"}) : arguments;
      const Outcome outcome = test::runUntil(
          {now, {}, folder.file(in)}, [&](pid_t) { return sizeOf(partial) >= limit; }, signal);
      if (outcome.status == 0) return stops;
      EXPECT_EQ(outcome.status, signal == SIGKILL ? 128 + SIGKILL : 130) << outcome.err;
      const bool says = outcome.err.find("kept in " + output + ".partial, and --resume") != std::string::npos;
      EXPECT_EQ(says, signal != SIGKILL && fs::exists(partial)) << outcome.err;
      // Only a kill may come when everything is in place already.
      EXPECT_TRUE(signal == SIGKILL || !fs::exists(folder.file(in + "/" + output)));
      ++stops;
      limit = sizeOf(partial) + 1 + random() % step;
    }
    ADD_FAILURE() << "no end of " << testing::PrintToString(arguments);
    return stops;
  }
  /// Has a command run whole in one folder and stopped in another; both end alike.
  int expectSameAfterStops(const Arguments& arguments, const std::string& output, int signal,
                           std::uintmax_t step)
  {
    for (const std::string name : {"whole", "stopped"}) {
      fs::remove_all(folder.file(name));
      fs::create_directory(folder.file(name));
    }
    EXPECT_EQ(run({arguments, {}, folder.file("whole")}).status, 0);
    const int stops = runWithStops("stopped", arguments, output, signal, step);
    EXPECT_TRUE(filesOf("stopped") == filesOf("whole")) << testing::PrintToString(arguments);
    EXPECT_FALSE(fs::exists(folder.file("stopped/" + output + ".partial")));
    return stops;
  }

  test::Folder folder;
  std::mt19937 random{12};
};

// A slice that cannot be read may be damaged, and a mended one makes another run; or its disk is away.
TEST_F(Resume, SaysWhatAnUnreadableSliceMeansForIt)
{
  fs::create_directory(folder.file("in"));
  test::makePhantom(folder.file("in/%02d.png"), 6, 200);
  const std::string first = folder.file("in/00.png"), whole = readFile(first);
  test::writeFile(first, whole.substr(0, whole.size() / 2));
  // The search for the range meets it at once.
  const Arguments align = {"align", "in", "-o", "a.nrrd"};
  expectRefusal(align, "Cannot read slice 0 from \"in/00.png\"");
  const Arguments inWindow = with(align, {"--window", "0", "200"});
  const Outcome failed = run({inWindow, {}, folder.path()});
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.err.find("--resume takes it up once the same files can be read"), std::string::npos)
      << failed.err;
  expectRefusal(with(inWindow, {"--resume"}), "Cannot read slice 0");
  test::writeFile(first, whole);
  expectRefusal(with(inWindow, {"--resume"}), "in/00.png has changed since");
}

// Killed at once and asked to stop, after any number of slices, in every kind of file.
TEST_F(Resume, GoesOnAfterTheLastSliceOfEveryFormat)
{
  io::writeVolume(*test::noiseField({{601, 499, 12}, 1, McPrimType::UInt8}), folder.file("in.nrrd"));
  test::writeLabels(folder.file("labels.nrrd"), {601, 499, 12});
  std::string table = "slice,tx,ty,angle_deg,flip\n";
  for (int k = 0; k < 12; ++k)
    table += std::to_string(k) + "," + std::to_string(3 * k) + ",-7.5," + std::to_string(4 * k - 30) + ",0\n";
  test::writeFile(folder.file("t.csv"), table);
  int stops = 0, signal = SIGTERM;
  for (const std::string output : {"a.nrrd", "a.nhdr", "a.mrc", "a.mha", "a.mhd", "a.nii", "a.tif",
                                   "a_%02d.png", "a_%02d.tif", "slices"}) {
    const std::string given = output == "slices" ? output + "/" : output;
    stops += expectSameAfterStops({"resample", "../in.nrrd", "-o", given, "--transforms", "../t.csv",
                                   "--labels", "../labels.nrrd", "--labels-out", "l.tif"},
                                  output, signal, 3000000);
    signal = signal == SIGTERM ? SIGKILL : signal == SIGKILL ? SIGHUP : SIGTERM;
  }
  EXPECT_GT(stops, 10);
}

TEST_F(Resume, GoesOnAfterTheLastPair)
{
  test::makePhantom(folder.file("in.nrrd"), 14, 200, {"--truth", folder.file("truth.csv")});
  int stops = 0;
  for (const std::string method : {"least-squares", "edges", "gravity"})
    stops += expectSameAfterStops({"align", "../in.nrrd", "-o", "a.nrrd", "--method", method, "--report",
                                   "report.json", "--auto-size", "--background", "most-frequent", "--truth",
                                   "../truth.csv"},
                                  "a.nrrd", SIGTERM, 3000);
  stops += expectSameAfterStops({"align", "../in.nrrd", "-o", "a.csv", "--transforms-only", "--scale", "1/2"},
                                "a.csv", SIGINT, 500);
  stops += expectSameAfterStops({"align", "../in.nrrd", "-o", "a.mha", "--transforms-only"}, "a.mha", SIGKILL,
                                3000);
  EXPECT_GT(stops, 3);
}

TEST_F(Resume, RefusesWhatItWasNotStoppedWith)
{
  test::makePhantom(folder.file("in.nrrd"), 12, 200);
  test::makePhantom(folder.file("other.nrrd"), 12, 200, {"--seed", "5"});
  const Arguments align = {"align", "in.nrrd", "-o", "a.nrrd"};
  expectRefusal(with(align, {"--resume"}), "nothing to resume: a.nrrd.partial does not exist");
  const std::string partial = folder.file("a.nrrd.partial");
  leaveStopped(align, "a.nrrd");
  expectRefusal(with(align, {"--resume", "--iterations", "20"}), "iterations is 1000 there and 20 here");
  expectRefusal(with(align, {"--resume", "--method", "gravity"}), "the method is least-squares there");
  expectRefusal(with(align, {"--resume", "--background", "7"}), "background is 0 there and 7 here");
  expectRefusal({"align", "other.nrrd", "-o", "a.nrrd", "--resume"}, "other.nrrd was no input of it");
  expectRefusal({"align", "in.nrrd", "-o", "b.nrrd", "--report", "a.nrrd.partial"}, "regular file");
  fs::last_write_time(folder.file("in.nrrd"), fs::file_time_type::clock::now());
  expectRefusal(with(align, {"--resume"}), "in.nrrd has changed since");
  // Without --resume it starts anew, in the place of what was kept.
  EXPECT_NE(expectRun(align).err.find("--resume would take up"), std::string::npos);
  EXPECT_FALSE(fs::exists(partial));

  fs::create_directory(partial);
  test::writeFile(partial + "/notes.txt", "mine");
  expectRefusal(align, "not what a stopped run has left");
  expectRefusal(with(align, {"--resume"}), "not what a stopped run has left");
}

TEST_F(Resume, KnowsItsInputsByTheirFiles)
{
  test::makePhantom(folder.file("in.nhdr"), 12, 200);
  fs::rename(folder.file("in.raw"), folder.file("voxels.bin"));
  std::string header = readFile(folder.file("in.nhdr"));
  test::writeFile(folder.file("in.nhdr"), header.replace(header.find("in.raw"), 6, "voxels.bin"));
  leaveStopped({"align", "in.nhdr", "-o", "a.nrrd"}, "a.nrrd");
  fs::last_write_time(folder.file("voxels.bin"), fs::file_time_type::clock::now());
  expectRefusal({"align", "in.nhdr", "-o", "a.nrrd", "--resume"}, "voxels.bin has changed since");

  fs::create_directory(folder.file("in"));
  test::makePhantom(folder.file("in/%02d.tif"), 12, 200);
  leaveStopped({"align", "in", "-o", "b.nrrd"}, "b.nrrd");
  test::writeFile(folder.file("in/log.txt"), "no slice");
  expectRun({"align", "in", "-o", "b.nrrd", "--resume"});
}

// Another folder to work in, and a link on the way, change the names of the files but not the files.
TEST_F(Resume, GoesOnFromAnotherFolder)
{
  for (const std::string name : {"in", "out", "elsewhere"}) fs::create_directory(folder.file(name));
  test::makePhantom(folder.file("in/stack.nrrd"), 12, 200);
  test::writeLabels(folder.file("in/labels.nrrd"), {200, 200, 12});
  fs::create_directory_symlink(folder.file("in"), folder.file("elsewhere/link"));
  const auto align = [&](const std::string& in, const std::string& out) {
    return Arguments{"align",        in + "/stack.nrrd",  "-o",       out + "/a.nrrd",
                     "--mask",       in + "/labels.nrrd", "--labels", in + "/labels.nrrd",
                     "--labels-out", out + "/l.nrrd"};
  };
  leaveStopped(align("in", "out"), "out/a.nrrd");
  const Outcome resumed = run({with(align("link", "../out"), {"--resume"}), {}, folder.file("elsewhere")});
  EXPECT_EQ(resumed.status, 0) << resumed.err;
  EXPECT_NE(resumed.out.find("before the stop"), std::string::npos) << resumed.out;
  EXPECT_TRUE(fs::exists(folder.file("out/a.nrrd")) && fs::exists(folder.file("out/l.nrrd")));
}

TEST_F(Resume, KeepsWhatWasWrittenBeforeTheDiskWasFull)
{
  test::makePhantom(folder.file("in.nrrd"), 5, 150);
  for (const std::string output : {"a.nrrd", "a.tif", "a.mrc"}) {
    const Arguments align = {"align", "in.nrrd", "-o", output, "--report", "r.json"};
    const Outcome full = run({align, {}, folder.path(), 60000});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.err.find("Cannot write \"" + output), std::string::npos) << full.err;
    EXPECT_NE(full.err.find("kept in " + output + ".partial, and --resume takes it up."), std::string::npos)
        << full.err;
    EXPECT_FALSE(fs::exists(folder.file(output)) || fs::exists(folder.file("r.json")));
    expectRun(with(align, {"--resume"}));
    expectRun({"align", "in.nrrd", "-o", "whole_" + output});
    EXPECT_TRUE(test::voxelsOf(folder.file(output)) == test::voxelsOf(folder.file("whole_" + output)));
    fs::remove(folder.file("r.json"));
  }
}

TEST_F(Resume, TwoRunsDoNotShareWhatTheyKeep)
{
  test::makePhantom(folder.file("in.nrrd"), 60, 300);
  const Arguments align = {"align", "in.nrrd", "-o", "a.nrrd"};
  Outcome first, second;
  untilMet("a.nrrd", [&] {
    const auto runSecond = [&](pid_t running) {
      if (!fs::exists(folder.file("a.nrrd.partial"))) return false;
      kill(running, SIGSTOP);
      second = run({align, {}, folder.path()});
      kill(running, SIGCONT);
      return true;
    };
    first = test::runUntil({align, {}, folder.path()}, runSecond, SIGTERM);
    return first.status != 0;
  });
  EXPECT_EQ(first.status, 130) << first.err;
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("Another run is at work in a.nrrd.partial"), std::string::npos) << second.err;
}

// Between the look at what a stopped run has left and the first finished pair minutes can pass.
TEST_F(Resume, NothingElseTakesThePlaceOfWhatIsReplaced)
{
  test::makePhantom(folder.file("in.nrrd"), 6, 1200);
  const Arguments align = {"align", "in.nrrd", "-o", "a.nrrd"};
  const std::string partial = folder.file("a.nrrd.partial");
  Outcome first;
  untilMet("a.nrrd", [&] {
    for (const std::string& before : {partial, folder.file("moved")}) fs::remove_all(before);
    leaveStopped(align, "a.nrrd");
    bool asked = false;
    std::error_code gone;
    const auto putNotes = [&](pid_t) {
      if (asked || !isLocked(partial)) return false;
      asked = true;
      fs::rename(partial, folder.file("moved"), gone);
      fs::create_directory(partial, gone);
      test::writeFile(partial + "/notes.txt", "mine");
      return false;
    };
    first = test::runUntil({align, {}, folder.path()}, putNotes, SIGTERM);
    return first.err.find("a.nrrd.partial has come into being since") != std::string::npos;
  });
  EXPECT_EQ(first.status, 1);
  EXPECT_NE(first.err.find("a.nrrd.partial has come into being since"), std::string::npos) << first.err;
  const auto left = folder.contents();
  EXPECT_EQ(readFile(partial + "/notes.txt"), "mine");
  EXPECT_TRUE(fs::exists(folder.file("moved/state.json")));
  EXPECT_FALSE(fs::exists(folder.file("a.nrrd")));
  for (const auto& [name, size] : left) EXPECT_EQ(name.find(".zxalign-"), std::string::npos) << name;
}

TEST_F(Resume, RefusesWhatIsDamaged)
{
  test::makePhantom(folder.file("in.nrrd"), 12, 200);
  const Arguments align = {"align", "in.nrrd", "-o", "a.nrrd"};
  leaveStopped(align, "a.nrrd");
  const std::string state = folder.file("a.nrrd.partial/state.json");
  const auto good = nlohmann::ordered_json::parse(readFile(state));
  auto bad = good;
  bad["pairs"][0]["editable"] = 1000000;
  test::writeFile(state, bad.dump());
  expectRefusal(with(align, {"--resume"}), "kept of the stopped run in a.nrrd.partial is damaged");
  bad = good;
  while (bad["pairs"].size() < 30) bad["pairs"].push_back(good["pairs"][0]);
  test::writeFile(state, bad.dump());
  expectRefusal(with(align, {"--resume"}), "kept of the stopped run in a.nrrd.partial is damaged");
}

TEST_F(Resume, TouchesNoInputAndNoOutputInItsFolder)
{
  fs::create_directory(folder.file("a.nrrd.partial"));
  test::makePhantom(folder.file("a.nrrd.partial/in.nrrd"), 5, 100);
  fs::rename(folder.file("a.nrrd.partial/in.nrrd"), folder.file("in.nrrd"));
  test::makePhantom(folder.file("a.nrrd.partial/in.nrrd"), 5, 100);
  expectRefusal({"align", "a.nrrd.partial/in.nrrd", "-o", "a.nrrd"}, "an input is in it");
  expectRefusal({"align", "in.nrrd", "-o", "a.nrrd", "--report", "a.nrrd.partial/r.json"},
                "is removed when the work is done");
}

TEST_F(Resume, KeepsWhatIsOfOthersInItsFolder)
{
  test::makePhantom(folder.file("in.nrrd"), 12, 200);
  const Arguments align = {"align", "in.nrrd", "-o", "a.nrrd"};
  const std::string notes = folder.file("a.nrrd.partial/notes.txt");
  leaveStopped(align, "a.nrrd");
  test::writeFile(notes, "mine");
  expectRefusal(align, "notes.txt in it is from no run");
  expectRefusal(with(align, {"--resume"}), "notes.txt in it is from no run");
  // Put there while a run is at work, which ends all the same.
  Outcome outcome;
  untilMet("a.nrrd", [&] {
    fs::remove_all(folder.file("a.nrrd.partial"));
    const auto putNotes = [&](pid_t) {
      if (!fs::exists(notes)) test::writeFile(notes, "mine");
      return false;
    };
    outcome = test::runUntil({align, {}, folder.path()}, putNotes, SIGTERM);
    return fs::exists(notes);
  });
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.err.find("a.nrrd.partial stays, since notes.txt"), std::string::npos) << outcome.err;
  EXPECT_EQ(readFile(notes), "mine");
  EXPECT_FALSE(fs::exists(folder.file("a.nrrd.partial/state.json")));
}

TEST_F(Resume, SaysWhenNothingCouldBeKept)
{
  test::makePhantom(folder.file("in.nrrd"), 14, 150);
  const Outcome full = run({{"align", "in.nrrd", "-o", "a.nrrd"}, {}, folder.path(), 1000});
  EXPECT_EQ(full.status, 1);
  EXPECT_NE(full.err.find("what is done could not be kept: Cannot write \"a.nrrd.partial/state.json\""),
            std::string::npos)
      << full.err;
  EXPECT_EQ(folder.contents().size(), 1U);
}

// A folder of slices may be a disk of its own, as links and mount points are.
TEST_F(Resume, WritesIntoAFolderOnAnotherDisk)
{
  const fs::path other = fs::path("/dev/shm") / fs::path(folder.path()).filename();
  struct stat here {
  }, there{};
  if (stat("/dev/shm", &there) != 0 || stat(folder.path().c_str(), &here) != 0 ||
      here.st_dev == there.st_dev || !fs::create_directory(other))
    GTEST_SKIP() << "there is one disk only";
  test::makePhantom(folder.file("in.nrrd"), 5, 100);
  fs::create_directory_symlink(other, folder.file("out"));
  const Outcome outcome = run({{"align", "in.nrrd", "-o", "out/"}, {}, folder.path()});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(std::distance(fs::directory_iterator(other), {}), 5 + 1) << "slices and their parameters";
  EXPECT_FALSE(fs::exists(folder.file("out.partial")));
  fs::remove_all(other);
}

} // namespace
