#include "outputFile.h"

#include "lineEnd.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

/// A folder that is removed after the test.
class OutputFiles : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = ::testing::TempDir() + "outputXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(&pattern[0]));
        m_folder = pattern;
    }
    void TearDown() override
    {
        fs::remove_all(m_folder);
    }
    std::string at(const char* name) const
    {
        return m_folder / name;
    }
    int files() const
    {
        return int(std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()));
    }

    fs::path m_folder;
};

std::string contentsOf(const std::string& path)
{
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    return all.str();
}

void fill(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

std::string troubleOf(const std::string& path)
{
    try {
        OutputFile(path).write("new");
    } catch (const LinkError& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST_F(OutputFiles, FileKeepsItsContentsUntilTheNewOnesAreWritten)
{
    fill(at("file"), "old");
    fs::permissions(at("file"), fs::perms(0640));
    OutputFile file(at("file"));
    EXPECT_EQ("old", contentsOf(at("file")));
    EXPECT_EQ(1, files());
    file.write("new\n");
    EXPECT_EQ("new\n", contentsOf(at("file")));
    EXPECT_EQ(fs::perms(0640), fs::status(at("file")).permissions());
    EXPECT_EQ(1, files());
}

TEST_F(OutputFiles, FileThatIsNotThereIsMade)
{
    OutputFile file(at("file"));
    EXPECT_FALSE(fs::exists(at("file")));
    file.write("");
    EXPECT_TRUE(fs::is_regular_file(at("file")));
    EXPECT_EQ(1, files());
}

TEST_F(OutputFiles, FileBehindALinkIsWrittenAndTheLinkStays)
{
    fill(at("file"), "old");
    fs::create_symlink("file", at("link"));
    fs::create_symlink(at("missing"), at("dangling"));
    OutputFile(at("link")).write("new");
    OutputFile(at("dangling")).write("made");
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_TRUE(fs::is_symlink(at("dangling")));
    EXPECT_EQ("new", contentsOf(at("file")));
    EXPECT_EQ("made", contentsOf(at("missing")));
}

// A limit on the size of files stands for a full disk.
TEST_F(OutputFiles, FullDiskLeavesTheOldFileWhole)
{
    fill(at("file"), "old");
    OutputFile file(at("file"));
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limits = {};
    getrlimit(RLIMIT_FSIZE, &limits);
    const rlimit small = {1000, limits.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    std::string trouble;
    try {
        file.write(std::string(5000, 'x'));
    } catch (const LinkError& error) {
        trouble = error.what();
    }
    setrlimit(RLIMIT_FSIZE, &limits);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(at("file") + ": File too large", trouble);
    EXPECT_EQ("old", contentsOf(at("file")));
    EXPECT_EQ(1, files());
}

TEST_F(OutputFiles, PipeIsWrittenInPlace)
{
    ASSERT_EQ(0, mkfifo(at("pipe").c_str(), 0600));
    const UniqueDescriptor reader(open(at("pipe").c_str(), O_RDONLY | O_NONBLOCK));
    OutputFile(at("pipe")).write("new");
    char bytes[8] = {};
    EXPECT_EQ(3, read(reader.get(), bytes, sizeof bytes));
    EXPECT_STREQ("new", bytes);
    EXPECT_TRUE(fs::is_fifo(at("pipe")));
}

// As /dev/stdout when the output goes to a file: what is there already stays.
TEST_F(OutputFiles, FileThatIsOpenAlreadyIsWrittenBehindItsEnd)
{
    const UniqueDescriptor opened(open(at("file").c_str(), O_WRONLY | O_CREAT, 0600));
    ASSERT_EQ(6, write(opened.get(), "first\n", 6));
    OutputFile("/dev/fd/" + std::to_string(opened.get())).write("second\n");
    EXPECT_EQ("first\nsecond\n", contentsOf(at("file")));
}

TEST_F(OutputFiles, FileThatCannotBeWrittenIsNamedAtTheStart)
{
    EXPECT_THROW(OutputFile(m_folder.string()), LinkError);
    EXPECT_THROW(OutputFile(at("missing/file")), LinkError);
    EXPECT_EQ("/dev/full: No space left on device", troubleOf("/dev/full"));
    EXPECT_EQ(at("missing/file") + ": No such file or directory", troubleOf(at("missing/file")));
}
