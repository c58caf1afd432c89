// The platform stand-ins: the name-to-id provider and the configuration
// reader's priority table.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "FerrixCfgFileReader.h"
#include "FerrixIdProvider.h"
#include "SystemCommon/Classification/ModuleId.h"

namespace {

TEST(FerrixIdProviderTest, EqualNamesGiveEqualIdsFromAnyThread) {
  FerrixIdProvider* provider = FerrixIdProvider_GetInstance();
  ASSERT_NE(provider, nullptr);
  EXPECT_EQ(provider, FerrixIdProvider_GetInstance());
  std::vector<std::vector<uint32_t>> ids(4);
  std::vector<std::thread> threads;
  for (size_t thread = 0; thread < ids.size(); ++thread) {
    threads.emplace_back([&ids, provider, thread] {
      for (int name = 0; name < 200; ++name) {
        ids[thread].push_back(provider->GetId(("name" + std::to_string(name)).c_str()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& seen : ids) EXPECT_EQ(seen, ids[0]);
  EXPECT_EQ(std::set<uint32_t>(ids[0].begin(), ids[0].end()).size(), 200u);
  for (uint32_t id : ids[0]) EXPECT_GE(id, 1u);
  EXPECT_EQ(provider->GetId(nullptr), provider->GetId(""));
}

TEST(FerrixCfgFileReaderTest, SuppliesATableOnlyWhenATestGaveOne) {
  FerrixCfgFileReader* reader = FerrixCfgFileReader_GetInstance();
  ASSERT_NE(reader, nullptr);
  reader->LoadConfig("ThreadPriorityMapper.cfg");
  uint32_t table[32] = {};
  EXPECT_FALSE(reader->FillPriorityTable(table));
  uint32_t given[32];
  for (uint32_t index = 0; index < 32; ++index) given[index] = index * 3;
  FerrixCfgFileReader_SetPriorityTableForTesting(given);
  ASSERT_TRUE(reader->FillPriorityTable(table));
  EXPECT_EQ(table[31], 93u);
  FerrixCfgFileReader_SetPriorityTableForTesting(nullptr);
  EXPECT_FALSE(reader->FillPriorityTable(table));
}

TEST(ModuleIdTest, KeepsItsName) {
  EXPECT_EQ(SystemCommon::Classification::ModuleId("WL_Quillan::DataPlayer").GetName(),
            "WL_Quillan::DataPlayer");
  EXPECT_EQ(SystemCommon::Classification::ModuleId(nullptr).GetName(), "");
}

}  // namespace
