#ifndef PKOAPI_SRC_ARV_ARVSCOPEDERROR_H
#define PKOAPI_SRC_ARV_ARVSCOPEDERROR_H

#include <glib.h>

namespace ZMT::PkoAPI::Arv {

// Owns one GError* for one Aravis call; frees it when the scope ends.
class ArvScopedError {
public:
    ArvScopedError() = default;
    ~ArvScopedError();
    ArvScopedError(const ArvScopedError&) = delete;
    ArvScopedError& operator=(const ArvScopedError&) = delete;

    // For the Aravis call's GError** argument. Must be null (fresh) here.
    GError** Out() { return &m_Error; }
    const GError* Get() const { return m_Error; }
    explicit operator bool() const { return m_Error != nullptr; }

private:
    GError* m_Error = nullptr;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
