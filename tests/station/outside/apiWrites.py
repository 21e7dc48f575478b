"""Writes through the API, beside the simulated PLC's memory."""

from stationProgram import StationTest

WRITE = "/api/v1/write"


class ApiWrites(StationTest):
    """POST /api/v1/write."""

    def written(self, served, tag, value):
        """The answer to a write of a tag."""
        return served.post(WRITE, {"link": "plc", "tag": tag, "value": value})

    def test_a_confirmed_write_is_in_the_plc_and_in_the_values(self):
        plc, served = self.station_with_plc("still", "level", "lamp", "offset",
                                            options="--allow-writes")
        served.await_good()
        for tag, value in (("still", 4711), ("offset", -5), ("level", 21.5), ("lamp", True)):
            with self.subTest(tag=tag):
                answer = self.written(served, tag, value)
                self.assertEqual((200, ["id", "outcome", "reason", "value"]),
                                 (answer.status, list(answer.json)))
                self.assertEqual(("confirmed", None, value), tuple(
                    answer.json[key] for key in ("outcome", "reason", "value")))
                self.assertEqual(value, served.values()[tag]["value"])
        served.end()
        plc.stop()
        # 21.5 is 0x41AC0000, MX12.3 is bit 3 of the word at MW12.
        self.assertEqual(["1 MW 3006 8", "1 MW 3050 4711", "1 MW 3055 65531", "1 MW 3060 16812"],
                         sorted(plc.memory()))

    def test_each_write_has_an_id_of_its_own(self):
        _, served = self.station_with_plc("still", options="--allow-writes")
        served.await_good()
        ids = [self.written(served, "still", value).json["id"] for value in range(5)]
        self.assertEqual(sorted(set(ids)), ids)

    def test_a_refused_write_tells_the_reason_and_what_the_tag_holds(self):
        _, served = self.station_with_plc(
            "still", options="--allow-writes", plc="--set MW100=7 --refuse MW100:2:write")
        served.await_good()
        answer = self.written(served, "still", 8)
        self.assertEqual((200, "refused", 7), (
            answer.status, answer.json["outcome"], answer.json["value"]))
        self.assertIn("illegal address", answer.json["reason"])

    def test_a_write_without_an_answer_has_failed(self):
        _, served = self.station_with_plc(
            "still", options="--allow-writes --timeout-ms 50 --attempts 2", plc="--silent 1")
        answer = self.written(served, "still", 8)
        self.assertEqual((200, "failed", None), (
            answer.status, answer.json["outcome"], answer.json["value"]))
        self.assertTrue(answer.json["reason"])

    def test_a_station_without_leave_writes_nothing(self):
        plc, served = self.station_with_plc("still")
        answer = self.written(served, "still", 1)
        self.assertEqual(403, answer.status)
        self.assertIn("--allow-writes", answer.error)
        plc.stop()
        self.assertEqual([], plc.memory())

    def test_a_tag_without_leave_is_not_written(self):
        plc, served = self.station_with_plc("still", options="--allow-writes",
                                          read_only=("still",))
        answer = self.written(served, "still", 1)
        self.assertEqual((403, 'tag "still" is read-only'), (answer.status, answer.error))
        plc.stop()
        self.assertEqual([], plc.memory())

    def test_what_cannot_be_written_is_refused_in_one_sentence(self):
        _, served = self.station_with_plc("still", "level", "lamp", options="--allow-writes")
        for tag, value, status, words in (
                ("nothing", 1, 404, "no tag"), ("still", 65536, 422, "0 to 65535"),
                ("still", -1, 422, "0 to 65535"), ("still", 1.5, 422, "0 to 65535"),
                ("still", "5", 422, "0 to 65535"), ("still", None, 422, "0 to 65535"),
                ("still", True, 422, "0 to 65535"), ("still", [5], 422, "0 to 65535"),
                ("lamp", 2, 422, "0, 1, true or false"), ("lamp", "1", 422, "true or false"),
                ("level", "nan", 422, "3.4028"), ("level", 1e39, 422, "3.4028")):
            with self.subTest(tag=tag, value=value):
                answer = self.written(served, tag, value)
                self.assertEqual((status, ["error"]), (answer.status, list(answer.json)))
                self.assertIn(words, answer.error)

    def test_numbers_are_those_of_json_however_large_or_small(self):
        _, served = self.station_with_plc("still", "level", options="--allow-writes",
                                          plc="--set MW100=7")
        served.await_good()

        def answer_to(tag, number):
            return served.post(WRITE, f'{{"link":"plc","tag":"{tag}","value":{number}}}'.encode())
        for tag, number, words in (("level", "1e400", "-3.4028"),
                                   ("level", "-1e400", "-3.4028"),
                                   ("level", "9" * 400, "-3.4028"),
                                   ("still", "1e400", "uint16: 0 to 65535")):
            with self.subTest(tag=tag, number=number):
                answer = answer_to(tag, number)
                self.assertEqual((422, ["error"]), (answer.status, list(answer.json)))
                self.assertIn(words, answer.error)
        for number in (".5", "1.", "-.5", "01", "+1", "1e", "0x10", "NaN", "Infinity", "1,5"):
            with self.subTest(number=number):
                self.assertEqual(400, answer_to("level", number).status)
        for tag, number, value in (("level", "1e-400", 0), ("level", "2.5E0", 2.5),
                                   ("still", "0.5e1", 5)):
            with self.subTest(tag=tag, number=number):
                answer = answer_to(tag, number).json
                self.assertEqual(("confirmed", value), (answer["outcome"], answer["value"]))

    def test_a_login_takes_no_key_twice_either(self):
        answer = self.station().post("/api/v1/login", b'{"token":["a"],"token":["b"]}')
        self.assertEqual(400, answer.status)
        self.assertIn("stands twice", answer.error)

    def test_a_body_of_another_form_is_refused(self):
        _, served = self.station_with_plc("still", options="--allow-writes")
        good = {"link": "plc", "tag": "still", "value": 1}
        for body in (b"", b"1", b"[]", b"null", b"{", b"\xff", b'{"link":"plc"', b"[" * 30000,
                     b'{"a":' * 5000 + b"1" + b"}" * 5000,
                     b'{"link":"plc","tag":"still","value":1,"value":2}',
                     b'{"link":"plc","tag":"still","value":1,"v\\u0061lue":2}'):
            with self.subTest(body=body[:20]):
                self.assertEqual(400, served.post(WRITE, body).status)
        for document in ({}, {**good, "force": 1}, {**good, "link": 1}, {**good, "tag": None},
                         {"link": "plc", "tag": "still"}):
            with self.subTest(document=document):
                self.assertEqual(400, served.post(WRITE, document).status)
        self.assertEqual(404, served.post(WRITE, {**good, "link": "other"}).status)
        self.assertEqual(405, served.get(WRITE).status)
