#include "catalogue/FileKind.h"

#include "host/common/Text.h"

bool IsScript(const std::wstring& name) { return ZLT::String::CaseInsesitiveFind(name, L".ps1"); }

bool IsCabinet(const std::wstring& name) { return ZLT::String::CaseInsesitiveFind(name, L".cab"); }
