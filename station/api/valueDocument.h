#ifndef VALUE_DOCUMENT_H
#define VALUE_DOCUMENT_H

#include "machine/tagConsent.h"
#include "values/jsonText.h"
#include "values/tagReading.h"

// What a client is told of one tag. The list of values, the stream of events and whatever else
// passes values on write them with these functions, so that no value goes out without its quality
// and its time. Any thread calls them.

/// Appends all that is known of a tag:
///
///     {"link":"plc","tag":"level","station":1,"address":"MW100","type":"float32:high",
///      "value":21.5,"quality":"good","time":1700000000000,"changed":1700000000000,
///      "trouble":null,"writable":true}
///
/// `value`, `time` and `changed` are null when the tag was never read.
void appendValue(JsonText& json, const QString& link, const Tag& tag, const TagReading& reading,
                 bool isWritable);

/// Appends the link, the tag and those fields of appendValue() that differ between two readings.
void appendChange(JsonText& json, const QString& link, const Tag& tag, const TagReading& before,
                  const TagReading& now);

#endif
