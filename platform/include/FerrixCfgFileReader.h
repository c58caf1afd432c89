#pragma once
// FerrixCfgFileReader: the head unit's configuration-file reader, one per
// process. Stand-in: it knows no configuration files, so FillPriorityTable
// answers false unless a test has given it a table.

#include <cstdint>

class FerrixCfgFileReader {
 public:
  virtual int LoadConfig(const char* fileName) = 0;
  virtual int Reserved1() { return 0; }
  // Fills 32 priorities (class-major, 8 levels per class) from the loaded
  // configuration; true when it did.
  virtual bool FillPriorityTable(uint32_t* table) = 0;

 protected:
  virtual ~FerrixCfgFileReader() = default;
};

FerrixCfgFileReader* FerrixCfgFileReader_GetInstance();

// Stand-in only: makes FillPriorityTable answer with these 32 priorities
// (null: answer false again). Not thread-safe; call before threads start.
void FerrixCfgFileReader_SetPriorityTableForTesting(const uint32_t* table);
