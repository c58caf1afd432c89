#include "runtime/WorkHandler.h"

#include "FerrixIdProvider.h"

namespace Quillan {

WorkHandler::WorkHandler() : m_id(0) {
  FerrixIdProvider* provider = FerrixIdProvider_GetInstance();
  if (provider != nullptr) m_id = provider->GetId("no_name");
}

WorkHandler::~WorkHandler() = default;

}  // namespace Quillan
