// What the shared library exports; everything else in it is hidden.
#pragma once

/// Put before a function, or between "class" and its name.
#define TARN_CONFIG_STORE_EXPORT __attribute__((visibility("default")))
