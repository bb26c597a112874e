#pragma once

// The whole public API of Lorvane: the run machinery, its options, the tag model and the
// catalogue. Add <lorvane/json.hpp> for the serialised forms.

#include <lorvane/arguments_maker.hpp>
#include <lorvane/atomic_parsley.hpp>
#include <lorvane/atomic_queue.hpp>
#include <lorvane/et_batches.hpp>
#include <lorvane/et_charset.hpp>
#include <lorvane/et_combined_progress.hpp>
#include <lorvane/et_error.hpp>
#include <lorvane/et_input.hpp>
#include <lorvane/et_language.hpp>
#include <lorvane/et_output.hpp>
#include <lorvane/et_path_filter.hpp>
#include <lorvane/et_process.hpp>
#include <lorvane/et_session.hpp>
#include <lorvane/et_settings.hpp>
#include <lorvane/file_tags.hpp>
#include <lorvane/metadata_reader.hpp>
#include <lorvane/metadata_writer.hpp>
#include <lorvane/text.hpp>
#include <lorvane/version.hpp>

#include <lorvane/canonical_text.hpp>
#include <lorvane/tag_item.hpp>
#include <lorvane/tag_key.hpp>
#include <lorvane/tag_name.hpp>
#include <lorvane/tag_stream.hpp>
#include <lorvane/tag_strings.hpp>
#include <lorvane/tag_assignment.hpp>
#include <lorvane/tag_type.hpp>
#include <lorvane/tag_values.hpp>
#include <lorvane/tool_groups.hpp>
