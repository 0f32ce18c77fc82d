#pragma once

#include "RnCom.h"

/// The COM of Windows.
class RnWin32Com final : public RnCom
{
public:
    RnComResult initialize() override;
    void uninitialize() override;
    RnComResult classIdOf(const std::u16string& inProgramId, RnClassId& outId) override;
    RnUnknown* activeObject(const RnClassId& inId) override;
};
