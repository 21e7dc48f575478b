#ifndef HANDLED_REQUESTS_H
#define HANDLED_REQUESTS_H

#include "requestHandler.h"

#include "hexText.h"

#include <gtest/gtest.h>

const std::int64_t MS = 1000000;

// pymodbus 3.0's RTU framer
const char* const WRITE = "01 06 0B B9 04 D2 D8 96";     // MW 3001 = 1234; the reply is the same
const char* const READ = "01 03 00 00 00 01 84 0A";      // the reply has 7 bytes
const char* const BROADCAST = "00 06 00 C8 00 4D C9 D0"; // QW 200 = 77

/// A request handler with stations 1 and 2. A test sets m_line and m_faults before the first
/// request.
class HandledRequests : public ::testing::Test
{
protected:
    RequestHandler& handler()
    {
        if (!m_handler)
            m_handler =
                std::make_unique<RequestHandler>(m_stations, LinePacing(m_line), m_faults, 1);
        return *m_handler;
    }
    std::vector<OutgoingPiece> handle(const char* hex, std::int64_t at)
    {
        Request request;
        request.bytes = bytesOf(hex);
        request.firstByteAt = at;
        request.lastByteAt = at;
        return handler().handle(request);
    }
    void expectOne(const std::vector<OutgoingPiece>& pieces, const char* hex, std::int64_t dueAt)
    {
        ASSERT_EQ(1u, pieces.size());
        EXPECT_EQ(hex, hexOf(pieces[0].bytes));
        EXPECT_EQ(dueAt, pieces[0].dueAt);
    }
    void always(Fault fault)
    {
        m_faults.rates[fault] = 1;
    }
    int marker()
    {
        return m_stations.find(1)->holdingRegister(3001);
    }

    PlcStations m_stations{{1, 2}};
    LineSettings m_line;
    FaultSettings m_faults;

private:
    std::unique_ptr<RequestHandler> m_handler;
};

#endif
