#pragma once
// DataPoolDirectory: how the data pool finds a module's data-pool objects.
// A provider enters under its provider id, a client under its client id, when
// it is built, and leaves when it is destroyed. On the head unit the data pool
// has its own ways and these calls do nothing; the stand-in keeps a table that
// a simulated data pool reads. Thread-safe.

#include <cstdint>

class DataPoolProviderInterface;
class DataPoolClientInterface;

namespace DataPoolDirectory {

void EnterProvider(uint32_t providerId, DataPoolProviderInterface* provider);
void LeaveProvider(uint32_t providerId, DataPoolProviderInterface* provider);
void EnterClient(uint32_t clientId, DataPoolClientInterface* client);
void LeaveClient(uint32_t clientId, DataPoolClientInterface* client);

// Stand-in only. The object found may be destroyed right after the call:
// callers use it only while they know the module keeps it alive.
DataPoolProviderInterface* FindProvider(uint32_t providerId);
DataPoolClientInterface* FindClient(uint32_t clientId);

}  // namespace DataPoolDirectory
