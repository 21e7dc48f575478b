"""The verbs without a link: info, check and series.

The ranges and address numbers are those of the driver's installed header."""

from commandLine import CommandLineTest


class InfoVerbs(CommandLineTest):
    """What the driver says of itself and of addresses."""

    def test_info_lists_version_settings_and_areas(self):
        run = self.host("info")
        self.assert_matches(
            run.lines, "^protocol .*type 0$", r"^interface +version 2\.0\.0\.0$",
            "^property page +0_0$",
            "^serial line +38400 baud, 8 data bits, parity NONE, stop bits 1$",
            r"^network +192\.168\.1\.100, port 8000$",
            "^MW +words +DDDD +0 +8190 +16 bits +read and write$",
            "^IW +words +DDDD +0 +510 +16 bits +read$",
            "^QW +words +DDDD +0 +510 +16 bits +read and write$",
            r"^MX +bits +DDDDO +0\.0 +7816\.7 +1 bit +read and write$",
            r"^IX +bits +DDDDO +0\.0 +511\.7 +1 bit +read$",
            r"^QX +bits +DDDDO +0\.0 +511\.7 +1 bit +read and write$")
        info, = self.objects("info")
        self.assertEqual(("2.0.0.0", 38400, 8000),
                         (info["interfaceVersion"], info["baud"], info["port"]))
        highest = {area["name"]: area["highest"] for area in info["areas"]}
        self.assertEqual(["IW", "IX", "MW", "MX", "QW", "QX"], sorted(highest))
        self.assertEqual((6, "7816.7"), (len(info["areas"]), highest["MX"]))

    def test_check_explains_an_address_in_one_line(self):
        """Each address with the exit status and the line; 3105 is 3000 + 8 * 13 + 1, and bit 9 of
        the register six behind 3000 is MX 13.1."""
        for status, address, line in (
                (0, "MW 100", r"^MW 100: valid, address number 3050, holding register 3050 "
                              r"\(function 3, written by 6\)$"),
                (0, "IX 0.3 --count 20", "address number 3, 20 bits from bit 3 on in input "
                                         r"registers 0 to 1 \(function 4\)$"),
                (0, "QW 510", "^QW 510: valid, address number 255, "),
                (0, "MX 13.1", r"^MX 13\.1: valid, address number 3105, "
                               "bit 9 of holding register 3006 "),
                (0, "MX13.1", r"^MX 13\.1: valid, address number 3105, "),
                (0, "%mw100 --count 2", "^MW 100: valid, address number 3050, .* 3050 to 3051 "),
                (0, "mw 0100", "^MW 100: valid, address number 3050, "),
                (7, "MX12.9", r"^MX 12\.9: not valid: the bit is 0 to 7; did you mean MX13\.1\?$"),
                (7, "QX 511.8 --write", r"^QX 511\.8: not valid: the bit is 0 to 7$"),
                (7, "MW100 4", '^MW100 4: not valid: there is no area "MW100"'),
                (7, "MW 101", "^MW 101: not valid: odd: a word starts at an even number$"),
                (7, "MW 8192", "^MW 8192: not valid: past the end of MW, whose last address is "
                               "8190$"),
                (7, "MW 8190 --count 2", "past the end of MW: the last address that leaves room "
                                         "for 2 words is 8188$"),
                (7, "QX 512.0", r"^QX 512\.0: not valid: past the end of QX, whose last address is "
                                r"511\.7$"),
                (7, "IW 0 --write", "^IW 0: not valid: IW is read-only$"),
                (7, "IX 1.0 --write", r"^IX 1\.0: not valid: IX is read-only$"),
                (7, "ZZ 0", '^ZZ 0: not valid: there is no area "ZZ"; the areas are '
                            "MW, IW, QW, MX, IX, QX$"),
                (7, "MX 12", "^MX 12: not valid: malformed"),
                (0, "IW 0", "^IW 0: valid")):
            with self.subTest(address=address):
                run = self.host(f"check {address}", status)
                self.assertEqual((1, []), (len(run.lines), run.errors), run)
                self.assertRegex(run.lines[0], line)

    def test_check_prints_an_object(self):
        found, = self.objects("check MW 101", 7)
        self.assertIs(found["valid"], False)
        self.assertIn("odd", found["reason"])
        found, = self.objects("check MX 12.3")
        self.assertIs(found["valid"], True)
        self.assertEqual((3099, 3099, 3006, 3),
                         tuple(found[key] for key in ("number", "coil", "firstRegister", "bit")))

    def test_series_lists_addresses_and_clips_at_the_end_of_the_area(self):
        self.assertEqual(["MW 0 = 3000", "MW 20 = 3010", "MW 40 = 3020"],
                         self.host("series MW 0 --count 3 --interval 10").lines)
        self.assertEqual(["QW 506 = 253", "QW 508 = 254", "QW 510 = 255", "QW 510 = 255",
                          "clipped: the last 1 lay past the end of QW and became 510"],
                         self.host("series QW 506 --count 4 --interval 1").lines)
        series, = self.objects("series QX 0.0 --count 3 --interval 9")
        self.assertEqual((0, [("0.0", 0), ("1.1", 9), ("2.2", 18)]),
                         (series["clipped"],
                          [(entry["address"], entry["number"]) for entry in series["entries"]]))
        self.assertEqual(["MW 8 = 3004"], self.host("series %mw8").lines)
        self.assertEqual(["MX 0.6 = 3006", "MX 1.0 = 3008"],
                         self.host("series mx0.6 --count 2 --interval 2").lines)
        self.assert_matches(self.host("series MX0.8", 7).lines,
                            r"^MX 0\.8: not valid: the bit is 0 to 7; did you mean MX1\.0\?$")
        self.assert_matches(self.host("series MW 3", 7).lines, r"^MW 3: not valid: odd")
