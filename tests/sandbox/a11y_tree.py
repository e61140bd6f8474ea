#!/usr/bin/python3
"""Prints the server form's accessible tree as a screen reader reads it through AT-SPI: each
object's role and name, then its relations, states, text or value, and actions.

    a11y_tree.py [--all] [--wait SECONDS] [APPLICATION]

APPLICATION is the program's name on the accessibility bus (default pyx-console). Without --all
only the form is printed, once its status has been read from the host (or, where no label names
the status, after the wait); with it, every window of the program at once. Run it in a session whose accessibility bus the program is on: sandbox/a11y-session
starts one with the console and runs this by default.
"""
import sys
import time

import pyatspi

# The states a screen reader speaks or acts on; "disabled" stands for the want of ENABLED.
STATES = [
    ("focusable", pyatspi.STATE_FOCUSABLE),
    ("focused", pyatspi.STATE_FOCUSED),
    ("checkable", pyatspi.STATE_CHECKABLE),
    ("checked", pyatspi.STATE_CHECKED),
    ("editable", pyatspi.STATE_EDITABLE),
    ("read-only", pyatspi.STATE_READ_ONLY),
    ("selected", pyatspi.STATE_SELECTED),
    ("modal", pyatspi.STATE_MODAL),
    ("active", pyatspi.STATE_ACTIVE),
]


# A longer text, such as the tool's output in the dialog, shows only its start.
TEXT_SHOWN = 60


def relation_name(relation_type):
    return relation_type.value_nick


def text_of(node):
    """The object's text through its text interface, or None where it has none."""
    try:
        return node.queryText().getText(0, -1)
    except NotImplementedError:
        return None


def value_of(node):
    try:
        return node.queryValue().currentValue
    except NotImplementedError:
        return None


def actions_of(node):
    try:
        action = node.queryAction()
    except NotImplementedError:
        return []
    return [action.getName(i) for i in range(action.nActions)]


def relations_of(node):
    """(relation, [target names]) for each of the object's relations."""
    relations = []
    for relation in node.getRelationSet():
        targets = [relation.getTarget(i) for i in range(relation.getNTargets())]
        relations.append((relation_name(relation.getRelationType()),
                          [target.name if target else None for target in targets]))
    return relations


def shown(target):
    """A relation's target as a line shows it: its name, or its role where it has none."""
    return repr(target.name) if target.name else "[%s]" % target.getRoleName()


def describe(node):
    """One line: [role] 'name', then what else a screen reader can learn of the object."""
    words = ["[%s] %r" % (node.getRoleName(), node.name)]
    if node.description:
        words.append("description=%r" % node.description)
    for relation in node.getRelationSet():
        targets = [relation.getTarget(i) for i in range(relation.getNTargets())]
        words.append("%s=%s" % (relation_name(relation.getRelationType()),
                                ",".join(shown(target) for target in targets if target)))
    state = node.getState()
    states = [word for word, kind in STATES if state.contains(kind)]
    if not state.contains(pyatspi.STATE_ENABLED):
        states.append("disabled")
    if states:
        words.append("{%s}" % ", ".join(states))
    text = text_of(node)
    if text is not None and len(text) > TEXT_SHOWN:
        words.append("text=%r… (%d characters)" % (text[:TEXT_SHOWN], len(text)))
    elif text is not None and (text or node.getRole() != pyatspi.ROLE_LABEL):
        words.append("text=%r" % text)
    value = value_of(node)
    if value is not None:
        words.append("value=%g" % value)
    actions = actions_of(node)
    if actions:
        words.append("actions=" + ",".join(actions))
    return " ".join(words)


def lines(node, depth=0):
    yield "  " * depth + describe(node)
    for child in node:
        if child is not None:
            yield from lines(child, depth + 1)


def find_all(node, predicate):
    """Every object under node (node included) for which predicate holds, in tree order."""
    found = [node] if predicate(node) else []
    for child in node:
        if child is not None:
            found += find_all(child, predicate)
    return found


def application(name):
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name == name:
            return app
    return None


def form(app):
    """The server form: the object that holds the four password fields."""
    fields = find_all(app, lambda node: node.getRole() == pyatspi.ROLE_PASSWORD_TEXT)
    return fields[0].parent if len(fields) == 4 else None


def status(form_node):
    """The form's status once the host's state has been read into it: the one label of the
    form's own (not of the network group) that another labels, with a value (a label's name is
    its text)."""
    found = [node for node in form_node if node is not None
             and node.getRole() == pyatspi.ROLE_LABEL and node.name
             and any(relation == "labelled-by" for relation, _ in relations_of(node))]
    return found[0] if len(found) == 1 else None


def wait_for(what, condition, seconds):
    """condition()'s first true result within seconds; an object that vanishes while it is read
    counts as not yet."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            result = condition()
        except Exception:  # pylint: disable=broad-except
            result = None
        if result:
            return result
        if time.monotonic() > deadline:
            raise TimeoutError("waited %g s for %s" % (seconds, what))
        time.sleep(0.1)


def main(arguments):
    whole = "--all" in arguments
    arguments = [a for a in arguments if a != "--all"]
    seconds = 20.0
    if arguments[:1] == ["--wait"]:
        seconds, arguments = float(arguments[1]), arguments[2:]
    name = arguments[0] if arguments else "pyx-console"
    try:
        app = wait_for("%s on the accessibility bus" % name, lambda: application(name), seconds)
        root = app if whole else wait_for("the server form", lambda: form(app), seconds)
    except TimeoutError as error:
        print("a11y_tree: %s" % error, file=sys.stderr)
        return 1
    if not whole:
        try:
            wait_for("a labelled status, read from the host", lambda: status(root), seconds)
        except TimeoutError as error:
            print("a11y_tree: %s; the form as it is:" % error, file=sys.stderr)
    for line in lines(root):
        print(line)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
