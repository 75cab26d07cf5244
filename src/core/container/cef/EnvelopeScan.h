// Reads the names of an envelope without taking memory, which a parser needs.
#pragma once

#include <string_view>

// As they stand in the text, with their escapes; empty where there are none.
struct EnvelopeNames {
    std::string_view system;
    std::string_view module;
    std::string_view method;
    std::string_view uniqueid;
    std::string_view sourceSystem;
    std::string_view sourceModule;
    std::string_view referenceUniqueid;
};

// True for the text of a request that is owed an answer. The text is checked no further than that needs; of
// names that occur twice the first counts. Comments may stand where blanks may,
// and a byte-order mark at the start.
bool ScanEnvelope(std::string_view json, EnvelopeNames& names) noexcept;
