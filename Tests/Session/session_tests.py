"""Tests the agent's replies and its end."""

from session_case import SessionCase, text_event

NOT_PERMITTED = ("Renommage : autorise Tavel Bridge dans Accessibilité et Surveillance de l’entrée, puis réactive "
                 "l’option.")


def ping_line(number):
    return f'{{"command":"ping","request_id":{number}}}\n'


class CommandTests(SessionCase):
    def setUp(self):
        super().setUp()
        self.start()

    def test_ping_is_answered(self):
        self.agent.send('{"command":"ping","request_id":7}\n')
        self.expect_same(self.agent.reply(7), {"request_id": 7, "ok": True, "reason": "", "sequence": self.sequence})
        self.quit()

    def test_unknown_commands_are_refused(self):
        for command in ("Ping", "", "nonsense", "é"):
            self.expect_refused("Commande clipboard inconnue", command)
        self.quit()

    def test_lines_that_are_no_commands_are_dropped(self):
        for line in (b"", b"\r", b"ping", b"[]", b"null", b'"ping"', b"7", b"{}",
                     b'{"command":"ping"}', b'{"request_id":1}',
                     b'{"command":"ping","request_id":"1"}', b'{"command":"ping","request_id":null}',
                     b'{"command":7,"request_id":1}', b'{"command":["ping"],"request_id":1}',
                     b'{"command":"ping","request_id":1', b'{"command":"ping","request_id":1}}',
                     b'{"command":"ping","request_id":1,}', b"{'command':'ping','request_id':1}",
                     b'{"command":"ping","request_id":1,"x":"\xff"}', b'{"command":"ping","request_id":1}\0',
                     b'{"command":"ping","request_id":1,"x":"\\ud800"}',
                     b'{"command":"ping","request_id":1,"x":' + b"[" * 512 + b"]" * 512 + b"}"):
            self.agent.send(line + b"\n" + ping_line(2).encode())
            self.agent.reply(2)  # request 1 gets no reply
        self.quit()

    def test_lines_are_read_as_documented(self):
        for line, number in (
                (b'{"command":"ping","request_id":3}\r', 3), (b'\xef\xbb\xbf{"command":"ping","request_id":4}', 4),
                (b'{"command":"none","command":"ping","request_id":1,"request_id":5}', 5),
                (b' { "request_id" : 7.9 , "command" : "p\\u0069ng" } ', 7),
                (b'{"command":"ping","request_id":-1}', 18446744073709551615),
                (b'{"command":"ping","request_id":true}', 1),
                (b'{"command":"ping","request_id":8,"x":' + b"[" * 511 + b"]" * 511 + b"}", 8)):
            self.agent.send(line + b"\n")
            self.assertTrue(self.agent.reply(number)["ok"], line)
        self.quit()

    def test_input_and_output_at_the_same_time(self):
        self.agent.send("".join(ping_line(number) for number in range(500)))
        self.copy_text("beside the pings")
        sequences = [self.agent.reply(number)["sequence"] for number in range(500)]
        self.assertEqual(sequences, sorted(sequences))
        self.expect_described(text_event("beside the pings"))
        self.quit()

    def test_a_command_may_come_in_pieces(self):
        line = ping_line(7).encode()
        for position in range(len(line)):
            self.agent.send(line[position:position + 1])
        self.agent.reply(7)
        self.quit()

    def test_the_prompt_is_switched_on_or_refused_and_off_again(self):
        for _ in range(2):
            reply = self.agent.request("configure_file_prompt", rename_prompt=True)
            self.assertIn((reply["ok"], reply["reason"]), [(True, ""), (False, NOT_PERMITTED)])
            self.assertEqual(reply["sequence"], self.sequence)
            self.assertEqual(
                self.request("configure_file_prompt", rename_prompt=False)["sequence"], self.sequence)
        self.expect_silence()
        self.quit()

    def test_discarded_contents_are_not_reported(self):
        for text in ("discarded", "discarded too"):
            self.copy_text(text)
            for event in self.discard():
                self.expect_same(event, text_event(text))
            self.expect_silence()
        self.copy_text("not discarded")
        self.expect_described(text_event("not discarded"))
        self.quit()


class LifeTests(SessionCase):
    def test_quit_ends_the_agent_and_removes_its_directory(self):
        self.start()
        self.expect_private_directory(self.export_directory)
        self.agent.send(ping_line(1) + '{"command":"quit","request_id":2}\n' + '{"command":"pi')
        self.agent.reply(1)
        self.assertTrue(self.agent.reply(2)["ok"])
        self.expect_gone()

    def test_the_end_of_input_ends_the_agent_when_all_is_answered(self):
        self.start()
        self.agent.send(ping_line(1) + ping_line(2).rstrip("\n"))
        self.agent.close_input()
        self.agent.reply(1)
        self.agent.reply(2)
        self.expect_gone()

    def test_the_end_of_input_cuts_the_last_line_short(self):
        self.start()
        self.agent.send(ping_line(1) + '{"command":"ping","request_id":2')
        self.agent.close_input()
        self.agent.reply(1)
        self.expect_gone()

    def test_the_agent_ends_when_its_parent_dies(self):
        self.start(below_shell=True)
        self.copy_text("while the parent lives")
        self.expect_described(text_event("while the parent lives"))
        self.agent.kill_shell()
        self.expect_gone()

    def test_the_agent_ends_below_another_parent_than_it_is_told(self):
        with self.launching:
            before = self.place.export_directories()
            self.launch("--parent-pid", "2147483647")
            self.agent.expect_end()
            self.assertEqual(self.place.export_directories() - before, set())

    def test_nothing_is_said_of_what_was_copied_before(self):
        self.copy_text("old")
        self.start()
        self.expect_silence()
        self.expect_on_pasteboard(b"old")
        self.quit()

    def test_nothing_is_said_of_other_pasteboards(self):
        self.start()
        own, self.pasteboard = self.pasteboard, f"{self.pasteboard or 'tavel-test'}-other"
        self.addCleanup(self.clear)
        self.copy_text("elsewhere")
        self.expect_silence()
        self.clear()
        self.pasteboard = own
        self.copy_text("here")
        self.expect_described(text_event("here"))
        self.quit()
