#include "catalogue/SoftwarePackage.h"

SoftwarePackage::SoftwarePackage() : preinstallSw(false), progress(0) {}
SoftwarePackage::SoftwarePackage(const SoftwarePackage&) = default;
SoftwarePackage::SoftwarePackage(SoftwarePackage&&) = default;
SoftwarePackage& SoftwarePackage::operator=(const SoftwarePackage&) = default;
SoftwarePackage& SoftwarePackage::operator=(SoftwarePackage&&) = default;
SoftwarePackage::~SoftwarePackage() = default;
