#include "host/session/VRXResponse.h"

VRXResponse::VRXResponse() = default;
VRXResponse::VRXResponse(const VRXResponse&) = default;
VRXResponse::VRXResponse(VRXResponse&&) noexcept = default;
VRXResponse& VRXResponse::operator=(const VRXResponse&) = default;
VRXResponse& VRXResponse::operator=(VRXResponse&&) noexcept = default;
VRXResponse::~VRXResponse() = default;

void VRXResponse::SetReturnCode(unsigned long code) { _returnCode = code; }

unsigned long VRXResponse::GetReturnCode() const { return _returnCode; }

void VRXResponse::SetResponse(const std::wstring& body) { _response = body; }

std::wstring VRXResponse::GetResponse() const { return _response; }
