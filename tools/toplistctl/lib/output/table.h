#pragma once

#include "toplistctl/lib/output/records.h"
