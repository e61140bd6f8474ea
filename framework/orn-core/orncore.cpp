#include "orncore.h"

OrnCore::~OrnCore() = default;
