#pragma once

// The only place that states the version; the build reads it from here.
#define TBSCRIPTS_VERSION_MAJOR 0
#define TBSCRIPTS_VERSION_MINOR 1
#define TBSCRIPTS_VERSION_PATCH 0
