"""The token file: made when it is missing, refused when others know it, and used by requests."""

from stationProgram import StationTest


class TokenFiles(StationTest):
    """Starts with a token file."""

    def test_a_missing_file_is_made_and_its_token_opens_the_station(self):
        station = self.station("--token-file token")
        token = (self.folder / "token").read_text(encoding="utf-8").strip()
        self.assertRegex(token, "^[0-9a-f]{64}$")
        self.assertEqual(0o600, (self.folder / "token").stat().st_mode & 0o7777)
        self.assertEqual(401, station.get("/api/v1/values").status)
        self.assertEqual(401, station.get("/metrics").status)
        self.assertEqual(200, station.get("/api/v1/values",
                                          {"Authorization": f"Bearer {token}"}).status)
        self.assertNotIn(token, station.err + station.out)

    def test_a_file_that_exists_is_not_changed(self):
        self.token("chosen-by-a-person\n")
        station = self.station("--token-file token")
        self.assertEqual(200, station.get(
            "/api/v1/values", {"Authorization": "Bearer chosen-by-a-person"}).status)
        self.assertEqual("chosen-by-a-person\n",
                         (self.folder / "token").read_text(encoding="utf-8"))

    def test_an_empty_file_is_refused(self):
        self.token("\n")
        self.assertEqual(["token: the token file is empty"],
                         self.refused("--token-file token --no-history", 1))

    def test_a_file_that_others_can_read_is_refused(self):
        for mode in (0o644, 0o640, 0o604):
            with self.subTest(mode=oct(mode)):
                self.token("secret\n", mode)
                self.assertEqual(["token: others can read or change the token file; allow its "
                                  "owner only: chmod 600"],
                                 self.refused("--token-file token --no-history", 1))

    def test_an_address_that_others_reach_needs_one(self):
        sentence = "--listen: other machines can reach this address: it needs a token file"
        for address in ("0.0.0.0:0", "[::]:0"):
            with self.subTest(address=address):
                self.assertEqual([sentence], self.refused(f"--listen {address} --no-history", 1))
        station = self.station("--listen 0.0.0.0:0 --token-file token")
        self.assertRegex(station.url, r"^http://0\.0\.0\.0:[1-9]")

    def token(self, text, mode=0o600):
        """Writes the token file."""
        self.file("token", text).chmod(mode)
