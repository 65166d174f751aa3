"""Undo, scenes and links of talv-host, with simulated devices over a real pseudo-terminal."""
import time
import unittest

from harness import LineTest, SLOW
from test_remote import RemoteTest, is_setting, setting


class EditingTest(RemoteTest):
    def start(self, *sim_options):
        sim, host = super().start(*(sim_options or ("--devices", "1:A,2:B")))
        self.settle(sim, host, 2)
        return sim, host

    def quiet_mark(self, sim, host):
        """From here on, with nothing under way any more: a device answers each setting, after a while."""
        said = None
        while said != (host.mark(), sim.mark()):
            said = (host.mark(), sim.mark())
            time.sleep(0.7 * SLOW)
        return sim.mark()

    def settings_since(self, sim, host, mark):
        """What the host has set since then, once nothing is under way."""
        self.quiet_mark(sim, host)
        return [text for text in sim.heard(mark) if is_setting(text)]


class History(EditingTest):
    def test_settings_and_assignments_go_back_and_forth(self):
        sim, host = self.start()
        gain = host.value(1, "gain", 0)
        for line in ("set 1 gain 0 10", "get 1 gain 0", "set 1 gain 0 11", "ready", "set 1 gain 0 12",
                     "set 2 gain 0 13", "set 2 gain 0 13", "assign 1 8", "assign 2 8"):
            host.ask(line)
        story = host.ask("history")
        self.assertEqual([entry["title"] for entry in story["entries"]],
                         ["gain 1/0 = 11", "gain 1/0 = 12", "gain 2/0 = 13", "device 1 on input 8",
                          "device 2 on input 8"])
        self.assertEqual(story["position"], 5)
        taken_back = [host.ask("undo")["steps"] for _ in range(5)]
        self.assertEqual(taken_back[:2], [[{"id": 1, "channel": 8}, {"id": 2, "channel": -1}],
                                          [{"id": 1, "channel": -1}]])
        self.assertEqual(taken_back[3:], [[{"id": 1, "param": "gain", "ch": 0, "value": value}] for value in (11, gain)])
        self.assertFalse(host.command("undo")["ok"])
        self.assertEqual((sim.state(1)["gain"][0], host.ask("connection 8")["id"]), (gain, 0))
        for _ in range(5):
            host.ask("redo")
        self.assertEqual((host.value(1, "gain", 0), host.ask("connection 8")["id"]), (12, 2))
        host.ask("undo")
        host.ask("set 1 brightness 3")
        self.assertFalse(host.command("redo")["ok"])

    def test_phantom_power_comes_on_only_by_the_word(self):
        sim, host = self.start()
        for line in ("set 1 plus48V 2 1", "ready", "set 1 plus48V 2 0"):
            host.ask(line)
        mark = self.quiet_mark(sim, host)
        self.assertIn("48v", host.command("undo")["error"])
        self.assertFalse(host.command("undo --now")["ok"])
        self.assertEqual(self.settings_since(sim, host, mark), [])
        host.ask("undo --allow-48v")
        self.assertEqual(self.settings_since(sim, host, mark), [setting(1, "plus48V", 1, 2)])


class Scenes(EditingTest):
    def test_a_recall_sends_what_differs_to_those_that_are_there(self):
        sim, host = self.start()
        for line in ("set 1 gain 0 30", 'scene save "Show 1"', "set 1 gain 0 10", "set 1 plus48V 3 1", "assign 2 16",
                     'scene save "Show 1"', "scene save Gone", "scene delete Gone", "set 1 gain 0 20",
                     "set 1 plus48V 3 0", "set 2 hpfFreq 7 33", "assign 2 -1"):
            host.ask(line)
        mark = self.quiet_mark(sim, host)
        answer = host.ask('scene recall "Show 1"')
        self.assertEqual((answer["sent"], answer["left"], answer["missing"]), (2, [{"id": 1, "ch": 3}], []))
        sent = self.settings_since(sim, host, mark)
        self.assertEqual(len(sent), 2)
        self.assertIn(setting(1, "gain", 10, 0), sent)
        self.assertEqual(host.ask("connection 16")["id"], 2)
        for count in (1, 0):
            self.assertEqual(host.ask('scene recall "Show 1" --allow-48v')["sent"], count)
            self.quiet_mark(sim, host)
        host.ask("undo")
        host.ask("undo")
        self.assertEqual((host.value(1, "gain", 0), host.ask("connection 16")["id"]), (20, 0))
        self.assertEqual(host.quit(), 0)
        sim.stop()
        sim = self.start_sim("--devices", "1:A")
        host = self.start_host()
        host.wait_ready()
        self.settle(sim, host)
        self.assertEqual(host.ask("scenes")["scenes"], ["Show 1"])
        self.assertEqual(host.ask('scene recall "Show 1"')["missing"], [2])
        self.assertEqual(host.ask("connection 16")["id"], 2, "that is the host's own")
        self.assertEqual(host.quit(), 0)


class Linked(EditingTest):
    def test_the_host_pushes_both_ways_and_the_line_one_way(self):
        sim, host = self.start()
        mark = self.quiet_mark(sim, host)
        pair = {"master": {"id": 1, "ch": 0}, "slave": {"id": 2, "ch": 5}, "allow48v": False}
        self.assertEqual(host.ask("link 1 0 2 5")["links"], [pair])
        self.assertEqual(self.settings_since(sim, host, mark), [])
        host.ask("set 1 gain 0 33")
        self.assertEqual(self.settings_since(sim, host, mark), [setting(1, "gain", 33, 0), setting(2, "gain", 33, 5)])
        host.ask("ready")
        host.ask("set 2 gain 5 34")
        self.assertEqual((sim.state(1)["gain"][0], sim.state(2)["gain"][5]), (34, 34))
        taken_back = host.ask("undo")["steps"]
        self.assertEqual({step["value"] for step in taken_back}, {33})
        self.assertEqual((sim.state(1)["gain"][0], sim.state(2)["gain"][5]), (33, 33))
        mark = self.quiet_mark(sim, host)
        sim.turn(1, "gain", 0, 50)
        sim.wait_heard(setting(2, "gain", 50, 5), since=mark)
        sim.turn(2, "gain", 5, 51)
        host.wait_value(2, "gain", 51, ch=5)
        self.assertEqual(self.settings_since(sim, host, mark), [setting(2, "gain", 50, 5)])
        self.assertEqual(sim.state(1)["gain"][0], 50)

    def test_late_answers_move_nothing(self):
        sim, host = self.start()
        host.ask("link 1 0 2 0")
        mark = self.quiet_mark(sim, host)
        host.send(*(f"set 1 gain 0 {level}" for level in range(70)))  # two answers to each, 20 a second are taken in
        host.reply(host.count(70))
        self.assertEqual(len(self.settings_since(sim, host, mark)), 140)
        self.assertEqual((host.value(2, "gain", 0), sim.state(2)["gain"][0]), (69, 69))


del LineTest, RemoteTest, EditingTest


if __name__ == "__main__":
    unittest.main()
