#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "tests/apps/CommandRig.h"

// Files as the world has them, and what must never be lost.

extern char** environ;

namespace corvane::rig {
namespace {

using Files = CommandLineTest;

TEST_F(Files, OfNoFramesStayFilesOfNoFrames) {
  write("in.wav", {48000, {Channel{}}});
  for (const char* format : {"float", "pcm16", "pcm24"}) {
    const Answer answer = render("in.wav", "out.wav", {"--format", format});
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_EQ(read("out.wav").frames(), 0U) << format;
  }
  EXPECT_EQ(render("in.wav", "none.flac", {"--format", "flac"}).err,
            "error: cannot write " + at("none.flac") +
                ": a FLAC file of no frames cannot be made; try --format float\n");
  EXPECT_FALSE(fs::exists(at("none.flac")));
}

TEST_F(Files, WithALyingHeaderGiveWhatIsThere) {
  write("in.wav", {48000, {noise(1000)}}, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  std::string content = bytes("in.wav");
  const auto data = content.find("data") + 4;
  for (const std::uint32_t promised : {0xffffffffU, 0x7fffff00U, 1000U}) {
    std::memcpy(&content[data], &promised, sizeof promised);
    writeBytes("lie.wav", content);
    const Answer answer = render("lie.wav", "out.wav", {"--raw", "0=0"});
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_EQ(read("out.wav").frames(), promised == 1000U ? 500U : 1000U);
  }
  for (std::size_t length = 0; length < data + 4;
       ++length) {  // cut anywhere in the header: refused, not crashed
    writeBytes("cut.wav", content.substr(0, length));
    const Answer answer = render("cut.wav", "cut-out.wav");
    EXPECT_TRUE(answer.code == 0 || (answer.code == 1 && !fs::exists(at("cut-out.wav")))) << length;
    fs::remove(at("cut-out.wav"));
  }
}

TEST_F(Files, OfManyContainersAreRead) {
  for (const int format :
       {SF_FORMAT_RF64 | SF_FORMAT_FLOAT, SF_FORMAT_W64 | SF_FORMAT_PCM_24, SF_FORMAT_AIFF | SF_FORMAT_PCM_16,
        SF_FORMAT_FLAC | SF_FORMAT_PCM_24, SF_FORMAT_CAF | SF_FORMAT_DOUBLE}) {
    write("in.x", {48000, {noise(700), noise(700, 2)}}, format);
    ASSERT_EQ(render("in.x", "out.wav", {"--raw", "0=0", "--block", "64"}).code, 0);
    const Sound input = read("in.x"), output = read("out.wav");
    ASSERT_EQ(output.channels.size(), 2U);
    // the strip's own first fade is past
    EXPECT_TRUE(std::equal(input.channels[1].begin() + 300, input.channels[1].end(),
                           output.channels[1].begin() + 300))
        << std::hex << format;
  }
}

TEST_F(Files, KeepWholeNumbersWholeAndHoldAtFullScale) {
  write("in.wav", {48000, {noise(4000)}}, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  for (const char* format : {"pcm16", "pcm24", "flac", "float"}) {
    ASSERT_EQ(render("in.wav", "out", {"--raw", "0=0", "--format", format}).code, 0);
    const Channel input = read("in.wav").channels[0], output = read("out").channels[0];
    EXPECT_TRUE(std::equal(input.begin() + 512, input.end(), output.begin() + 512)) << format;
  }
  write("loud.wav", {48000, {Channel(1000, 4.0F)}});
  const Answer loud = render("loud.wav", "out.wav", emptyStripWith({"--format", "pcm16"}));
  EXPECT_NE(loud.err.find("1000 samples were above full scale"), std::string::npos) << loud.err;
  EXPECT_EQ(read("out.wav").channels[0], Channel(1000, 32767.0F / 32768.0F));
}

TEST_F(Files, AreTheSameBytesForTheSameSound) {
  write("in.wav", {48000, {noise(1000)}});
  ASSERT_EQ(render("in.wav", "a.wav", emptyStripWith({})).code, 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // a time of day in the header would move on
  ASSERT_EQ(render("in.wav", "b.wav", emptyStripWith({})).code, 0);
  EXPECT_EQ(bytes("a.wav"), bytes("b.wav"));
}

TEST_F(Files, MayBeTheirOwnOutput) {
  write("in.wav", {48000, {noise(200000)}});
  ASSERT_EQ(render("in.wav", "out.wav", emptyStripWith({"--set", "Mstr:Type=Master Control"})).code, 0);
  fs::create_symlink("in.wav", folder / "link.wav");
  ASSERT_EQ(render("in.wav", "link.wav", emptyStripWith({"--set", "Mstr:Type=Master Control"})).code, 0);
  EXPECT_EQ(bytes("in.wav"), bytes("out.wav"));
  EXPECT_TRUE(fs::is_symlink(folder / "link.wav"));
  EXPECT_EQ(names(), (std::vector<std::string>{"in.wav", "link.wav", "out.wav"}));
}

TEST_F(Files, MayHaveNamesInAnyBytes) {
  const std::string odd = "-\xff\n'\" x.wav", longest = std::string(251, 'n') + ".wav";
  for (const std::string& name : {odd, longest}) {
    write(name, {48000, {noise(10)}});
    const Answer answer = run({"render", at(name), "--out-dir", at("out"), "--meters", at("m.json")});
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_TRUE(fs::exists(folder / "out" / name));
    EXPECT_EQ(std::count(answer.out.begin(), answer.out.end(), '\n'), 1) << "one line, whatever the name";
  }
}

/// Starts the program with `arguments`; its output goes nowhere.
pid_t start(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), CORVANE_PROGRAM);
  std::vector<char*> pointers;
  for (auto& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
  pid_t child = -1;
  EXPECT_EQ(posix_spawn(&child, CORVANE_PROGRAM, &actions, nullptr, pointers.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  return child;
}

TEST_F(Files, AreNeverLeftHalfWrittenByAnInterrupt) {
  write("in.wav", {48000, {Channel(480000)}});
  writeBytes("out.wav", "the old one");
  for (const int signal : {SIGINT, SIGTERM}) {
    // an hour of tail: far more work than the test waits for
    const pid_t child =
        start({"render", at("in.wav"), "-o", at("out.wav"), "--tail", "3600", "--block", "64"});
    for (int tries = 0; names().size() < 3 && tries < 1000; ++tries)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(names().size(), 3U) << "the temporary file stands beside the old one";
    ::kill(child, signal);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << "a shell must see the signal";
    EXPECT_EQ(names(), (std::vector<std::string>{"in.wav", "out.wav"}));
    EXPECT_EQ(bytes("out.wav"), "the old one");
  }
}

TEST_F(Files, AreNeverLeftHalfWrittenByAFullDisk) {
  write("in.wav", {48000, {noise(100000)}});
  writeBytes("out.wav", "the old one");
  const std::string command = std::string(CORVANE_PROGRAM) + " render '" + at("in.wav") + "' -o '" +
                              at("out.wav") + "' 2> '" + at("err") + "'";
  const int status = shell("ulimit -f 64; " + command);  // blocks of 512 or 1024 bytes, both too few
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(bytes("err"), "error: cannot write " + at("out.wav") + ": File too large\n");
  EXPECT_EQ(bytes("out.wav"), "the old one");
  EXPECT_EQ(names(), (std::vector<std::string>{"err", "in.wav", "out.wav"}));
}

TEST_F(Files, KeepThePermissionsOfTheOneTheyReplace) {
  write("in.wav", {48000, {noise(10)}});
  writeBytes("out.wav", "old");
  ::chmod(at("out.wav").c_str(), 0640);
  ASSERT_EQ(render("in.wav", "out.wav").code, 0);
  struct stat status {};
  ::stat(at("out.wav").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

}  // namespace
}  // namespace corvane::rig
