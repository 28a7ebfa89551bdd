#include <PkoAPI/Sim/SimTypes.h>

#include <utility>

namespace ZMT::PkoAPI::Sim {

namespace {

std::string& CurrentWriter()
{
    thread_local std::string writer = "client";
    return writer;
}

}  // namespace

WriterScope::WriterScope(const std::string& writer) : m_Previous(CurrentWriter())
{
    CurrentWriter() = writer;
}

WriterScope::~WriterScope()
{
    CurrentWriter() = std::move(m_Previous);
}

std::string WriterScope::Current()
{
    return CurrentWriter();
}

}  // namespace ZMT::PkoAPI::Sim
