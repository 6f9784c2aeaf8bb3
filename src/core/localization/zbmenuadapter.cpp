#include "localization/zbmenuadapter.h"

// Defined here so that the vtable has one home.
ZBMenuAdapter::~ZBMenuAdapter() = default;
