// The platform stand-ins: the name-to-id provider and the configuration
// reader's priority table.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "FerrixCfgFileReader.h"
#include "FerrixIdProvider.h"

namespace {

TEST(FerrixIdProviderTest, EqualNamesGiveEqualIdsFromAnyThread) {
  FerrixIdProvider* provider = FerrixIdProvider_GetInstance();
  std::vector<std::vector<uint32_t>> ids(4);
  std::vector<std::thread> threads;
  for (auto& seen : ids) {
    threads.emplace_back([&seen, provider] {
      for (int name = 0; name < 200; ++name)
        seen.push_back(provider->GetId(std::to_string(name).c_str()));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& seen : ids) EXPECT_EQ(seen, ids[0]);
  EXPECT_EQ(std::set<uint32_t>(ids[0].begin(), ids[0].end()).size(), 200u);
  EXPECT_EQ(std::set<uint32_t>(ids[0].begin(), ids[0].end()).count(0), 0u);
}

TEST(FerrixCfgFileReaderTest, SuppliesATableOnlyWhenATestGaveOne) {
  FerrixCfgFileReader* reader = FerrixCfgFileReader_GetInstance();
  reader->LoadConfig("ThreadPriorityMapper.cfg");
  uint32_t table[32] = {}, given[32];
  EXPECT_FALSE(reader->FillPriorityTable(table));
  for (uint32_t index = 0; index < 32; ++index) given[index] = index * 3;
  FerrixCfgFileReader_SetPriorityTableForTesting(given);
  ASSERT_TRUE(reader->FillPriorityTable(table));
  EXPECT_EQ(table[31], 93u);
  FerrixCfgFileReader_SetPriorityTableForTesting(nullptr);
  EXPECT_FALSE(reader->FillPriorityTable(table));
}

}  // namespace
