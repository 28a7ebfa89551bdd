#ifndef PKOAPI_SRC_ARV_ARVDESCRIPTIONCHECK_H
#define PKOAPI_SRC_ARV_ARVDESCRIPTIONCHECK_H

#include <cstddef>
#include <string>

namespace ZMT::PkoAPI::Arv {

// Checks a camera's GenICam description before Aravis works with it.
// Aravis reads what it can of a description that is cut off (a camera's
// memory read short, a damaged file) and opens a camera with part of its
// features; and it evaluates the nodes' pointers recursively, so a
// description whose pointers form a cycle overflows the stack at the first
// read. Both are refused at open instead.
class ArvDescriptionCheck {
public:
    // PkoErrorSuccess, or PkoErrorBadDescription with a message for people
    // in problem: where the text stops parsing, or the nodes of a cycle.
    static int Check(const char* xml, std::size_t size, std::string& problem);
};

}  // namespace ZMT::PkoAPI::Arv

#endif
