// InputFile: path clean-up, statuses, and reads, rewinds and re-opens.

#include "player/InputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "Storage.h"
#include "tests/support/TempFile.h"

namespace Quillan {
namespace {

using pelorin_test::TempFolder;

// Everything up to the end of file, byte by byte.
std::string ReadRest(InputFile& file) {
  std::string out;
  for (;;) {
    uint8_t byte = 0;
    uint32_t count = 99;
    const FileStatus status = file.Read(&byte, &count);
    if (status == FileStatus::kEndOfFile) {
      EXPECT_EQ(count, 0u);
      return out;
    }
    EXPECT_EQ(status, FileStatus::kSuccess);
    out += static_cast<char>(byte);
  }
}

TEST(InputFileOpen, StatusesAndClosedOperations) {
  TempFolder folder;
  const std::string path = folder.Write("f", "abc");
  uint8_t byte = 0;
  uint32_t count = 5;

  InputFile empty("", O_RDONLY);
  EXPECT_EQ(empty.Open(), FileStatus::kIoError);
  InputFile missing(folder.Path() + "/missing", O_RDONLY);
  EXPECT_EQ(missing.Open(), FileStatus::kOpenFailed);
  EXPECT_FALSE(missing.IsOpen());
  EXPECT_EQ(missing.Read(&byte, &count), FileStatus::kIoError);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(missing.Seek(0, 0), FileStatus::kIoError);

  InputFile file(path, O_RDONLY);
  ASSERT_EQ(file.Open(), FileStatus::kSuccess);
  EXPECT_EQ(file.Open(), FileStatus::kAlreadyOpen);
  EXPECT_EQ(file.Read(nullptr, 1, &count), FileStatus::kIoError);
  EXPECT_EQ(file.Read(&byte, 1, nullptr), FileStatus::kIoError);
  ASSERT_EQ(file.Read(&byte, &count), FileStatus::kSuccess);
  EXPECT_EQ(byte, 'a');  // the failed second Open kept the file
  EXPECT_EQ(file.Seek(-1000, 0), FileStatus::kIoError);
  ASSERT_EQ(file.Seek(0, 0), FileStatus::kSuccess);  // drops what was read ahead
  EXPECT_EQ(ReadRest(file), "abc");
  folder.Write("f", "d", "ab");  // bytes appended after the end are delivered
  EXPECT_EQ(ReadRest(file), "d");
  file.Close();
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.Read(&byte, &count), FileStatus::kIoError);
  ASSERT_EQ(file.Open(), FileStatus::kSuccess);
  EXPECT_EQ(ReadRest(file), "abcd");  // re-opened at the start

  InputFile directory(folder.Path(), O_RDONLY);  // opens, but does not read
  ASSERT_EQ(directory.Open(), FileStatus::kSuccess);
  count = 1;
  EXPECT_EQ(directory.Read(&byte, &count), FileStatus::kIoError);
  EXPECT_EQ(count, 0u);
}

TEST(InputFileOpen, PathCleanUpAndStorageMapping) {
  TempFolder folder;
  folder.Write("events", "cleaned");
  std::string odd = folder.Path() + "//events";
  odd.replace(odd.find('/', 1), 1, "\\\\");  // "/tmp\\\\pelorin-...//events"
  InputFile file(odd, O_RDONLY);
  ASSERT_EQ(file.Open(), FileStatus::kSuccess) << odd;
  EXPECT_EQ(ReadRest(file), "cleaned");

  // A 300-character path opens the file named by its first 254 characters.
  const std::string prefix = folder.Path() + "/";
  const std::string name254(254 - prefix.size(), 'n');
  folder.Write(name254, "cut");
  InputFile longPath(prefix + name254 + std::string(300 - 254, 'x'), O_RDONLY);
  ASSERT_EQ(longPath.Open(), FileStatus::kSuccess);
  EXPECT_EQ(ReadRest(longPath), "cut");
  // The 255th character is not kept: a file named by 255 is not the one opened.
  folder.Write(name254 + "x", "wrong");
  InputFile stillCut(prefix + name254 + "x", O_RDONLY);
  ASSERT_EQ(stillCut.Open(), FileStatus::kSuccess);
  EXPECT_EQ(ReadRest(stillCut), "cut");

  // The head unit's storage path maps onto the storage root.
  Storage::SetStorageRoot(folder.Path());
  InputFile mapped("/fs/sda0\\events", O_RDONLY);
  const FileStatus status = mapped.Open();
  Storage::SetStorageRoot("");
  ASSERT_EQ(status, FileStatus::kSuccess);
  EXPECT_EQ(ReadRest(mapped), "cleaned");
}

}  // namespace
}  // namespace Quillan
