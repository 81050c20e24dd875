#pragma once

/// @file
/// The only place that states the version; the build reads it from here.

#define TBSCRIPTS_VERSION_MAJOR 0 ///< first number of the version
#define TBSCRIPTS_VERSION_MINOR 1 ///< second number of the version
#define TBSCRIPTS_VERSION_PATCH 0 ///< third number of the version
