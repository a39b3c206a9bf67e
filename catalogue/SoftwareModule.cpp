#include "catalogue/SoftwareModule.h"

SoftwareModule::SoftwareModule() = default;
SoftwareModule::SoftwareModule(const SoftwareModule&) = default;
SoftwareModule::SoftwareModule(SoftwareModule&&) = default;
SoftwareModule& SoftwareModule::operator=(const SoftwareModule&) = default;
SoftwareModule& SoftwareModule::operator=(SoftwareModule&&) = default;
SoftwareModule::~SoftwareModule() = default;
