// The mark of what the shared library exports; everything else has hidden visibility.
#pragma once

#define TARN_EXPORT __attribute__((visibility("default")))
