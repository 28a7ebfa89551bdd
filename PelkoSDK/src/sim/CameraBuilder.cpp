#include <PkoAPI/Sim/CameraBuilder.h>

#include "CameraBuilderData.h"
#include "SimCameraImpl.h"
#include "SimState.h"
#include "ValueText.h"

#include <cmath>
#include <new>
#include <utility>

namespace ZMT::PkoAPI::Sim {

namespace {

FeatureDecl* NewDecl(CameraBuilderData& data, const std::string& name, int dataType)
{
    data.m_Decls.push_back(std::make_unique<FeatureDecl>());
    FeatureDecl* decl = data.m_Decls.back().get();
    decl->name = name;
    decl->dataType = dataType;
    return decl;
}

}  // namespace

CameraBuilder::CameraBuilder(const std::string& id, const std::string& model)
    : m_Data(std::make_unique<CameraBuilderData>())
{
    m_Data->m_Id = id;
    m_Data->m_Model = model;
}

CameraBuilder::~CameraBuilder() = default;

FeatureBuilder CameraBuilder::AddInteger(const std::string& name, long long value, long long minimum, long long maximum,
                                         long long increment)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataInt);
    decl->value = FormatInteger(value);
    decl->intMinimum = minimum;
    decl->intMaximum = maximum;
    decl->intIncrement = increment;
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddFloat(const std::string& name, double value, double minimum, double maximum,
                                       double increment)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataFloat);
    decl->value = FormatFloat(value);
    decl->floatMinimum = minimum;
    decl->floatMaximum = maximum;
    decl->floatIncrement = increment;
    if (!std::isfinite(value))
        decl->error = "value is not a finite number";
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddEnumeration(const std::string& name, const std::vector<std::string>& entries,
                                             const std::string& value)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataEnum);
    decl->entries = entries;
    decl->value = value;
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddBoolean(const std::string& name, bool value)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataBool);
    decl->value = FormatBoolean(value);
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddString(const std::string& name, const std::string& value)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataString);
    decl->value = value;
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddCommand(const std::string& name)
{
    return FeatureBuilder(NewDecl(*m_Data, name, PkoFeatureDataCommand));
}

FeatureBuilder CameraBuilder::AddRaw(const std::string& name, const std::string& bytes)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, PkoFeatureDataRaw);
    decl->value = bytes;
    return FeatureBuilder(decl);
}

FeatureBuilder CameraBuilder::AddOfType(const std::string& name, int dataType)
{
    FeatureDecl* decl = NewDecl(*m_Data, name, dataType);
    decl->opaque = true;
    return FeatureBuilder(decl);
}

SimCameraPtr CameraBuilder::Build() const
{
    m_Data->m_Error.clear();
    try {
        std::vector<FeatureDecl> decls;
        decls.reserve(m_Data->m_Decls.size());
        for (const std::unique_ptr<FeatureDecl>& decl : m_Data->m_Decls)
            decls.push_back(*decl);
        SimState state;
        if (!state.Init(std::move(decls), m_Data->m_Error))
            return SimCameraPtr();
        return SimCameraPtr(new SimCameraImpl(m_Data->m_Id, m_Data->m_Model, std::move(state)));
    } catch (const std::bad_alloc&) {
        m_Data->m_Error = "out of memory";
        return SimCameraPtr();
    }
}

std::string CameraBuilder::Error() const
{
    return m_Data->m_Error;
}

}  // namespace ZMT::PkoAPI::Sim
