#pragma once

// What extensions need to hand a share to the host application.
#include "handoff/Gathering.h"
#include "handoff/Staging.h"
