#include "ArvScopedError.h"

namespace ZMT::PkoAPI::Arv {

ArvScopedError::~ArvScopedError()
{
    g_clear_error(&m_Error);
}

}  // namespace ZMT::PkoAPI::Arv
