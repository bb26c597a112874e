#pragma once

// The whole public API of Lorvane: the run machinery, its options, the tag model and the
// catalogue. Add <lorvane/json.hpp> for the serialised forms.

#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_charset.hpp>
#include <lorvane/et_error.hpp>
#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_path_filter.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/et_settings.hpp>
#include <lorvane/text.hpp>
