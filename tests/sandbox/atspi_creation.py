#!/usr/bin/python3
"""A whole server creation driven through AT-SPI, as a screen reader user drives it, on the
simulated host.

    atspi_creation.py BUILD_DIR      the test: the creation in sandbox/run, then the host's checks
    atspi_creation.py --drive        the client's part, inside sandbox/a11y-session

The client types two passwords key by key and sets two through the editable text interface,
checks the custom network group through its action, sets host and domain name through the
editable text interface and the address with the keyboard, and presses every button through its
action. It checks the controls' names and labels, that focus reaches each window on the way, and
that no event the program sends carries a password. Exits with 77 where the sandbox, Xvfb, the
window manager, the AT-SPI bus or pyatspi is missing.
"""
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))

# Only letters, digits and '-', none of them a mask character, so that a single typed character
# in an event is told from a mask.
PASSWORDS = {"kerberos": "kerb-q7zx-2931", "admin": "adm-v8yw-4406"}
HOST, DOMAIN = "dc1", ".corp.lan"

# X key symbols: Shift+Tab, and the arrows.
KEY_BACKTAB, KEY_UP, KEY_DOWN = 0xFE20, 0xFF52, 0xFF54

# The run inside gets this much less than the test's time limit, each wait inside far less.
MARGIN_S = 10


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


# The client inside the session.

def drive():
    # pyatspi is Debian's; importing it here leaves the outer part free of it.
    import pyatspi
    from gi.repository import GLib

    import a11y_tree as tree

    context = GLib.MainContext.default()
    events = []  # (event type, role of its source, its window's name, data, source's texts)
    focus_windows = []  # the window of each object that gained focus, in order; titles change
    focus_names = []

    def window_of(node):
        while node is not None and node.parent is not None and \
                node.parent.getRole() != pyatspi.ROLE_APPLICATION:
            node = node.parent
        return node

    def on_event(event):
        data = event.any_data if isinstance(event.any_data, str) else ""
        texts = []
        try:
            role = event.source.getRole()
            texts = [event.source.name, event.source.description]
            window = window_of(event.source)
            window_name = window.name if window is not None else None
        except Exception:  # pylint: disable=broad-except
            role, window, window_name = None, None, None
        events.append((event.type, role, window_name, data, texts))
        if (event.type.startswith("object:state-changed:focused") and event.detail1) \
                or event.type.startswith("focus:"):
            focus_windows.append(window)
            if window_name not in focus_names:
                focus_names.append(window_name)

    pyatspi.Registry.registerEventListener(
        on_event, "object:text-changed", "object:property-change", "object:state-changed",
        "object:text-caret-moved", "object:text-selection-changed", "object:selection-changed",
        "object:value-changed", "object:children-changed", "object:active-descendant-changed",
        "object:announcement", "focus:", "window:")

    start = time.monotonic()

    def wait_for(what, condition, seconds=8):
        """Lets events in while it waits; condition()'s first true result. Each wait met is
        logged with the time since the start, so that a slow step shows."""
        deadline = time.monotonic() + seconds
        while True:
            while context.pending():
                context.iteration(False)
            try:
                result = condition()
            except Exception:  # pylint: disable=broad-except
                result = None
            if result:
                print("%5.1f s  %s" % (time.monotonic() - start, what))
                return result
            if time.monotonic() > deadline:
                raise Failure("waited %g s for %s" % (seconds, what))
            time.sleep(0.05)

    def key(symbol):
        """Presses and releases the key of an X key symbol, as the keyboard would."""
        pyatspi.Registry.generateKeyboardEvent(symbol, None, pyatspi.KEY_SYM)

    def one(found):
        return found[0] if len(found) == 1 else None

    def find(root, role, name=None):
        return one(tree.find_all(root, lambda node: node.getRole() == role
                                 and (name is None or node.name == name)))

    def labelled_by(node):
        return [name for relation, targets in tree.relations_of(node)
                if relation == "labelled-by" for name in targets]

    def press(node, action_name):
        action = node.queryAction()
        names = [action.getName(i) for i in range(action.nActions)]
        check(action_name in names, "%r offers the actions %s, not %s"
              % (node.name, names, action_name))
        check(action.doAction(names.index(action_name)), "%r refused %s" % (node.name, action_name))

    def new_window(role, known):
        for window in app:
            if window is not None and window.getRole() == role and window not in known:
                return window
        return None

    def await_focus(window, since, what):
        wait_for("focus to reach %s %r" % (what, window.name),
                 lambda: window in focus_windows[since:])

    app = wait_for("the console on the accessibility bus",
                   lambda: tree.application("pyx-console"), 20)
    form = wait_for("the server form", lambda: tree.form(app), 20)
    main_window = window_of(form)
    # The status, named by its label, has a value once the host's state has been read.
    wait_for("the status value labelled 'Status'", lambda: tree.status(form) is not None
             and labelled_by(tree.status(form)) == ["Status"], 20)

    # Every control a user can reach with Tab has a name, which its label gives.
    for node in tree.find_all(form, lambda node: node.getState().contains(pyatspi.STATE_FOCUSABLE)):
        check(node.name, "an unnamed control: " + tree.describe(node))
    fields = tree.find_all(form, lambda node: node.getRole() == pyatspi.ROLE_PASSWORD_TEXT)
    for field in fields:
        check(labelled_by(field) == [field.name],
              "a password field not labelled by its name: " + tree.describe(field))

    # The passwords: the Kerberos pair typed key by key, as a user types, the administrator's
    # pair set through the editable text interface, as a dictation tool would.
    by_name = {field.name: field for field in fields}
    for label, password, typed in [
            ("Kerberos database password", PASSWORDS["kerberos"], True),
            ("Repeat Kerberos password", PASSWORDS["kerberos"], True),
            ("ORN admin password", PASSWORDS["admin"], False),
            ("Repeat ORN admin password", PASSWORDS["admin"], False)]:
        field = by_name.get(label)
        check(field is not None, "no password field named %r among %s" % (label, list(by_name)))
        if typed:
            check(field.queryComponent().grabFocus(), "%r took no focus" % label)
            wait_for("focus in %r" % label,
                     lambda field=field: field.getState().contains(pyatspi.STATE_FOCUSED))
            # A key each: an ASCII character is its own key symbol.
            for character in password:
                key(ord(character))
        else:
            check(field.queryEditableText().setTextContents(password),
                  "%r refused its text" % label)
        wait_for("%d characters in %r" % (len(password), label),
                 lambda field=field: field.queryText().characterCount == len(password))

    def control(role, label):
        """The object of that role that the label names (a value shows as the name)."""
        return wait_for("a %s labelled %r" % (role, label), lambda: one(tree.find_all(
            form, lambda node: node.getRole() == role and label in labelled_by(node))))

    def usable(node):
        return node.getState().contains(pyatspi.STATE_ENABLED) and \
            node.getState().contains(pyatspi.STATE_FOCUSABLE)

    # The network fields can be read before the group is checked (the host is ws1.example.lan),
    # and set once it is.
    host = control(pyatspi.ROLE_TEXT, "Hostname")
    domain = control(pyatspi.ROLE_TEXT, "Domain name")
    box = control(pyatspi.ROLE_COMBO_BOX, "IP address")
    check(tree.text_of(host) == "ws1" and not usable(host),
          "before the group is checked: " + tree.describe(host))
    check(box.name and not usable(box), "before the group is checked: " + tree.describe(box))
    group = wait_for("the custom network group's check box",
                     lambda: find(form, pyatspi.ROLE_CHECK_BOX, "Use custom network settings"))
    press(group, "Toggle")
    wait_for("the group checked", lambda: group.getState().contains(pyatspi.STATE_CHECKED))

    for node, text in [(host, HOST), (domain, DOMAIN)]:
        check(node.name == labelled_by(node)[0], "%r is not named by its label" % node.name)
        wait_for("%r editable" % node.name, lambda node=node: usable(node))
        check(node.queryEditableText().setTextContents(text), "%r refused its text" % node.name)
        wait_for("%r to read %r" % (node.name, text),
                 lambda node=node: tree.text_of(node) == text)
    server_name = control(pyatspi.ROLE_LABEL, "Server name:")
    wait_for("the server name %s" % (HOST + DOMAIN), lambda: server_name.name == HOST + DOMAIN)

    # The address. Qt 5's combo box offers no selection interface (its popup list selects an
    # item without making it current), so the address is chosen as a keyboard user chooses it:
    # Shift+Tab from the host name, then arrows. The first address after the offered one that is
    # neither a loopback nor a link-local address, so that the choice shows in /etc/hosts; the
    # offered one where there is no other.
    wait_for("the IP box enabled", lambda: usable(box))
    addresses = [item.name for item in
                 tree.find_all(box, lambda node: node.getRole() == pyatspi.ROLE_LIST_ITEM)]
    check(box.name in addresses, "the IP box shows %r, not one of %s" % (box.name, addresses))
    offered = addresses.index(box.name)
    others = [i for i, a in enumerate(addresses) if i != offered
              and not a.startswith(("127.", "::1", "fe80:"))]
    target = min(others, key=lambda i: (i < offered, i)) if others else offered
    address = addresses[target]
    check(host.queryComponent().grabFocus(), "the host name took no focus")
    wait_for("focus on the host name", lambda: host.getState().contains(pyatspi.STATE_FOCUSED))
    key(KEY_BACKTAB)
    wait_for("focus on the IP box", lambda: box.getState().contains(pyatspi.STATE_FOCUSED))
    for _ in range(abs(target - offered)):
        key(KEY_DOWN if target > offered else KEY_UP)
    wait_for("the IP box to show %s" % address, lambda: box.name == address)

    create = find(form, pyatspi.ROLE_PUSH_BUTTON, "Create server")
    check(create is not None, "no button named Create server")
    known = [main_window]
    since = len(focus_windows)
    press(create, "Press")
    warning = wait_for("the warning box", lambda: new_window(pyatspi.ROLE_ALERT, known))
    await_focus(warning, since, "the warning box")
    known.append(warning)
    since = len(focus_windows)
    press(wait_for("Yes in the warning box", lambda: find(warning, pyatspi.ROLE_PUSH_BUTTON, "Yes")),
          "Press")

    dialog = wait_for("the initialisation dialog", lambda: new_window(pyatspi.ROLE_DIALOG, known))
    await_focus(dialog, since, "the dialog")
    known.append(dialog)
    # When the run ends, focus moves to Close and the dialog says how the run ended.
    close = wait_for("Close at the end of the run",
                     lambda: find(dialog, pyatspi.ROLE_PUSH_BUTTON, "Close"), 20)
    wait_for("focus on Close", lambda: close.getState().contains(pyatspi.STATE_FOCUSED))
    for role in (pyatspi.ROLE_TEXT, pyatspi.ROLE_PROGRESS_BAR):
        node = find(dialog, role)
        check(node is not None and node.name, "no single named %s in the dialog: %s"
              % (role, [tree.describe(node) for node in dialog]))
    outcome = dialog.description or find(dialog, pyatspi.ROLE_TEXT).description
    check(outcome, "neither the dialog nor its pane says how the run ended")
    print("The dialog at the end of the run:")
    for line in tree.lines(dialog):
        print("  " + line)
    since = len(focus_windows)
    press(close, "Press")

    question = wait_for("the reboot question", lambda: new_window(pyatspi.ROLE_ALERT, known))
    await_focus(question, since, "the reboot question")
    since = len(focus_windows)
    press(wait_for("Yes in the reboot question",
                   lambda: find(question, pyatspi.ROLE_PUSH_BUTTON, "Yes")), "Press")
    await_focus(main_window, since, "the console's window again")
    wait_for("the form read again: Re-create server",
             lambda: find(form, pyatspi.ROLE_PUSH_BUTTON, "Re-create server"), 15)

    # Let the last events in, then look at every one for a password: in full anywhere, and a
    # single character of one in anything a password field sends.
    settled = time.monotonic() + 0.5
    wait_for("the last events", lambda: time.monotonic() > settled)
    secret_characters = set("".join(PASSWORDS.values()))
    typed = 0
    for kind, role, window, data, texts in events:
        for text in [data] + texts:
            check(not any(password in text for password in PASSWORDS.values()),
                  "%s from a %s of %r carries a password" % (kind, role, window))
        if role == pyatspi.ROLE_PASSWORD_TEXT and kind.startswith("object:text-changed"):
            typed += 1
            check(not secret_characters & set(data),
                  "%s from a password field carries its text: %r" % (kind, data))
    check(typed, "no text change came from a password field, so none was examined")
    print("address %s; the dialog said %r; %d events, %d of them text changes of password "
          "fields, none with a password; focus reached %s"
          % (address, outcome, len(events), typed,
             ", ".join(repr(name) for name in focus_names)))
    return address


def run_drive():
    sys.path.insert(0, HERE)
    try:
        address = drive()
    except Failure as failure:
        print("atspi_creation: %s" % failure, file=sys.stderr)
        # What the client saw at that moment: every window of the console.
        subprocess.run(["/usr/bin/python3", os.path.join(HERE, "a11y_tree.py"), "--all",
                        "--wait", "1"], stdout=sys.stderr, check=False)
        return 1
    # The outer part finds the chosen address in /etc/hosts.
    with open(os.environ["PYX_ATSPI_ADDRESS_FILE"], "w", encoding="utf-8") as out:
        out.write(address)
    return 0


# The test outside: the sandbox, then the host as the creation left it.

def read(path):
    try:
        with open(path, "rb") as source:
            return source.read().decode("utf-8", "replace")
    except OSError:
        return ""


def run_test(build):
    build = os.path.abspath(build)
    limit = int(os.environ.get("PYX_TEST_TIMEOUT", "120")) - MARGIN_S
    with tempfile.TemporaryDirectory() as scratch:
        state = os.path.join(scratch, "state")
        chosen = os.path.join(scratch, "address")
        command = [
            os.path.join(REPO, "sandbox", "run"), "--debs", os.path.join(build, "sandbox-debs"),
            "--translations", os.path.join(build, "translations"), "--state-dir", state,
            "--hostname", "ws1.example.lan",
            "--orn-init-duration", "1", "--env", "SUDO_UID=1000",
            "--env", "PYX_ATSPI_ADDRESS_FILE=" + chosen, "--",
            os.path.join(REPO, "sandbox", "a11y-session"), build, "--",
            "/usr/bin/python3", os.path.abspath(__file__), "--drive"]
        run = subprocess.Popen(command)
        try:
            inside = run.wait(timeout=limit)
        except subprocess.TimeoutExpired:
            # Ended gently, the sandbox takes its processes and its work folder with it.
            run.terminate()
            try:
                run.wait(timeout=MARGIN_S / 2)
            except subprocess.TimeoutExpired:
                run.kill()
                run.wait()
            print("atspi_creation: the run in the sandbox did not end within %d s" % limit,
                  file=sys.stderr)
            return 1
        if inside == 77:
            return 77
        if inside != 0:
            print("atspi_creation: the run in the sandbox ended with %d" % inside,
                  file=sys.stderr)
            return 1
        address = read(chosen)
        hosts = read(os.path.join(state, "etc", "hosts"))
        log = read(os.path.join(state, "log"))
        journal = read(os.path.join(state, "journal"))
        try:
            check(read(os.path.join(state, "hostname")).strip() == HOST,
                  "the host is not named %s" % HOST)
            check(hosts.endswith("%s %s%s %s\n" % (address, HOST, DOMAIN, HOST)),
                  "/etc/hosts has no line for %s%s at %s:\n%s" % (HOST, DOMAIN, address, hosts))
            check("corp.lan" in read(os.path.join(state, "etc", "orn", "orn.conf")),
                  "orn-init wrote no orn.conf for corp.lan")
            check("\norn-init [init]" in "\n" + log and "vex-wmfunc" in log,
                  "orn-init or the reboot was not called:\n" + log)
            for password in PASSWORDS.values():
                check(password not in log + journal, "a password in the call log or journal")
        except Failure as failure:
            print("atspi_creation: %s" % failure, file=sys.stderr)
            return 1
    return 0


def main(arguments):
    if arguments == ["--drive"]:
        return run_drive()
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    return run_test(arguments[0])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
