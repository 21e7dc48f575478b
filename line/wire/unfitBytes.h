#ifndef UNFIT_BYTES_H
#define UNFIT_BYTES_H

#include <QByteArray>
#include <QString>

/// Says why received bytes hold no answer to a request, so that the user finds the fault:
///
/// | received                                      | text                                         |
/// |-----------------------------------------------|----------------------------------------------|
/// | the start of a Modbus TCP answer              | a Modbus TCP header: this peer speaks ...    |
/// | the request                                   | the request itself came back: an echoing ... |
/// | a whole frame, station 2                      | an answer of another station, 2              |
/// | a whole frame, our station                    | an answer to another request                 |
/// | 3 bytes                                       | 3 bytes, too few for an answer               |
/// | the start of the answer                       | 7 of 9 bytes of the answer                   |
/// | anything else                                 | 9 bytes with a wrong checksum: noise, or ... |
///
/// The first row that holds counts. A refusal and the confirmation of a write are answers, too.
/// @param request   the frame that was sent, with its checksum
/// @param received  the bytes since then, any number
/// @return empty when the bytes hold an answer to the request, when there are no bytes, and when no
///         answer is due to the request
QString describeUnfit(const QByteArray& request, const QByteArray& received);

#endif
