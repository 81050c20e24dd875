#pragma once

// For builds that compile several files of tests at a time: the name that each file gives its rows
// becomes another one in each.
#define TBSCRIPTS_JOINED(first, second) first##second
#define TBSCRIPTS_NUMBERED(name, number) TBSCRIPTS_JOINED(name, number)
#define FACTS TBSCRIPTS_NUMBERED(FACTS_, __COUNTER__)
