"""The command line of dtstore. Exit codes: 0 done, 1 not done, 2 wrong usage, 3 done with notes under --strict."""

import argparse
import datetime
import json
import os
import sys

from . import editing, ics_import, model, operations, showing, zones
from .document import StoreFolder
from .importing import Importer, Report
from .problem import Problem
from .words import counted

DONE, NOT_DONE, WITH_NOTES = 0, 1, 3  # argparse itself ends with 2
EXIT_CODES = "Exit codes: 0 done; 1 not done, and one line says why; 2 wrong usage; 3 done with notes, under --strict."
SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "samples")


def _zone(text):
    zone = zones.find(text)
    if zone is None:
        raise argparse.ArgumentTypeError(f"the zone {text!r} is not known")
    return zone


def _date(text):
    try:
        return datetime.datetime.fromisoformat(text).replace(hour=0, minute=0, second=0, microsecond=0)
    except ValueError:
        raise argparse.ArgumentTypeError(f"{text!r}: expected a date such as 2026-11-20") from None


def _positive(text):
    if not text.isdigit() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"{text!r}: expected a number above 0")
    return int(text)


def parser():
    top = argparse.ArgumentParser(prog="dtstore", description="Makes, fills, shows and checks the store folders "
                                  "of mapistore64.dll. docs/dtstore.md tells more.", epilog=EXIT_CODES)
    top.add_argument("--list-operations", action="store_true",
                     help="print the names of operations that a fault plan can name, and end")
    commands = top.add_subparsers(dest="command", metavar="COMMAND")

    new = _command(commands, "new", "make a store")
    new.add_argument("--name", default="Ada Quist", help="whose mailbox it is (Ada Quist)")
    new.add_argument("--email", default="ada.quist@nordlys.example", help="and the address (ada.quist@nordlys.example)")
    new.add_argument("--profile", default="Demo", help="name of the logon profile (Demo)")
    new.add_argument("--not-personal", action="store_true", help="a store of another kind, with two forms of identifiers")
    new.add_argument("--samples", action="store_true", help="fill it with the samples that come along")
    _import_options(new)

    imported = _command(commands, "import", "read calendars, contacts and mail into a store")
    imported.add_argument("files", metavar="FILE", nargs="+", help=".ics, .vcf, .eml, or a folder of them")
    imported.add_argument("--folder", help="id, role, name or path of the folder to fill")
    imported.add_argument("--own-folders", action="store_true", help="a new folder for each file, called like it")
    imported.add_argument("--book", metavar="CONTAINER", help="read .vcf files into the address book; A/B is B inside A")
    _import_options(imported)

    shown = _command(commands, "show", "tell what a store holds")
    shown.add_argument("what", nargs="?", metavar="ID|FOLDER",
                       help="one thing by its id, or the messages of a folder; everything in short without it")

    added = _command(commands, "add", "add one thing")
    added.add_argument("kind", choices=[*editing.KINDS, "folder", "json"],
                       help="json reads a whole message from the standard input")
    added.add_argument("words", nargs="*", metavar="KEY=VALUE", help="for a folder: PATH [CLASS]")
    added.add_argument("--folder", help="id, role, name or path of the folder to fill")
    added.add_argument("--zone", type=_zone, help="zone of times without one (that of this machine)")

    changed = _command(commands, "change", "change properties of a message, folder, store, container or entry")
    changed.add_argument("id", metavar="ID", type=_positive, help="as show tells it")
    changed.add_argument("words", nargs="+", metavar="KEY=VALUE", help="KEY=null takes a property away")
    changed.add_argument("--zone", type=_zone, help="zone of times without one (that of this machine)")

    removed = _command(commands, "remove", "take things out")
    removed.add_argument("ids", type=_positive, nargs="+", metavar="ID", help="as show tells them")

    validated = _command(commands, "validate", "check a store")
    validated.add_argument("--clean", action="store_true", help="remove files that nothing names")
    return top


def _command(commands, name, what):
    command = commands.add_parser(name, help=what, description=what[0].upper() + what[1:] + ".", epilog=EXIT_CODES)
    command.add_argument("store", metavar="STORE", help="the store's folder")
    return command


def _import_options(command):
    command.add_argument("--zone", type=_zone, help="zone of whole days and of times without one (that of the file, "
                         "else that of this machine)")
    command.add_argument("--me", metavar="ADDRESS", help="whose answers count in meetings (the owner)")
    command.add_argument("--today", metavar="DATE", type=_date, help="the day around which the horizon lies (today)")
    command.add_argument("--from", dest="since", metavar="DATE", type=_date, help="first day on which instances become single messages")
    command.add_argument("--until", metavar="DATE", type=_date, help="and the last day")
    command.add_argument("--most", metavar="NUMBER", type=_positive, default=2000, help="single messages of one event (2000)")
    command.add_argument("--readable", action="store_true", help="keep recurrence as a description, not as bytes")
    command.add_argument("--strict", action="store_true", help="exit with 3 when there were notes")
    command.add_argument("--quiet", action="store_true", help="no progress and no summary")


def main(arguments=None):
    options = parser().parse_args(arguments)
    try:
        if options.list_operations:
            print("\n".join(operations.names()))
            return DONE
        if options.command is None:
            parser().error("a command is missing (dtstore --help lists them)")
        return globals()["_run_" + options.command](options)
    except Problem as problem:
        print(f"dtstore: {problem}", file=sys.stderr)
        return NOT_DONE
    except OSError as error:
        print(f"dtstore: {error.filename or vars(options).get('store', 'output')}: {error.strerror}", file=sys.stderr)
        return NOT_DONE
    except KeyboardInterrupt:
        print("dtstore: interrupted; the store is as it was", file=sys.stderr)
        return NOT_DONE


def _run_new(options):
    if "@" not in options.email[1:]:
        raise Problem(f"{options.email!r} is no e-mail address")
    folder = StoreFolder(options.store)
    folder.create(model.new_document(options.name, options.email, options.profile, not options.not_personal))
    if not options.samples:
        return DONE
    options.folder, options.book, options.own_folders = None, None, False
    samples = os.path.normpath(SAMPLES)
    book = argparse.Namespace(**{**vars(options), "book": model.GLOBAL_LIST})
    report = Report(options.quiet)
    with folder.writing() as document:
        _importer(folder, document, options, report).run(
            [os.path.join(samples, name) for name in ("calendar", "contacts", "mail")])
        _importer(folder, document, book, report).run([os.path.join(samples, "address-book")])
    report.finish()
    return WITH_NOTES if options.strict and report.notes else DONE


def _run_import(options):
    folder, report = StoreFolder(options.store), Report(options.quiet)
    folder.read()  # a missing or damaged store is told before a long import
    with folder.writing() as document:
        _importer(folder, document, options, report).run(options.files)
    report.finish()
    return WITH_NOTES if options.strict and report.notes else DONE


def _importer(folder, document, options, report):
    horizon = ics_import.default_horizon((options.today or datetime.datetime.now()).date())
    if options.since:
        horizon.first = options.since
    if options.until:
        horizon.last = options.until + datetime.timedelta(days=1) - datetime.timedelta(minutes=1)
    if horizon.last < horizon.first:
        raise Problem("the horizon ends before it begins")
    horizon.most = options.most
    return Importer(folder, document, argparse.Namespace(**{**vars(options), "horizon": horizon}), report)


def _run_show(options):
    print(showing.show(StoreFolder(options.store).read(), options.what))
    return DONE


def _run_add(options):
    folder = StoreFolder(options.store)
    folder.read()
    edit = editing.Edit(options.zone or ics_import.local_zone())
    with folder.writing() as document:
        store = model.default_store(document)
        if options.kind == "folder":
            if not 1 <= len(options.words) <= 2:
                raise Problem("add folder: expected PATH [CLASS]")
            number = model.make_folder(document, store, *options.words)["id"]
        else:
            number = _add_message(document, store, options, edit)
        model.name_properties(document)
    print(number)
    return DONE


def _add_message(document, store, options, edit):
    if options.kind == "json":
        try:
            message = json.load(sys.stdin)
        except ValueError as error:
            raise Problem(f"the standard input is no JSON: {error}") from None
        if not isinstance(message, dict) or not isinstance(message.get("class"), str):
            raise Problem("the standard input is no message: it has no class")
        message = {key: value for key, value in message.items() if key not in ("id", "folder")}
    else:
        message = editing.new_message(options.kind, options.words, edit)
    if options.folder:
        store, target = model.find_folder(document, options.folder)
    else:
        target = model.folder_for_class(store, message["class"])
    return model.add_message(document, store, target, message)["id"]


def _run_change(options):
    folder = StoreFolder(options.store)
    folder.read()
    edit = editing.Edit(options.zone or ics_import.local_zone())
    with folder.writing() as document:
        kind, one, _ = editing.find(document, options.id)
        if kind == "message":
            edit.apply(one, options.words)
        else:
            edit.apply({"class": "", "properties": one.setdefault("properties", {})}, options.words)
        model.name_properties(document)
    return DONE


def _run_remove(options):
    folder = StoreFolder(options.store)
    folder.read()
    with folder.writing() as document:
        for number in options.ids:
            editing.remove(document, number)
    return DONE


def _run_validate(options):
    folder = StoreFolder(options.store)
    document = folder.read()
    counts = [counted(sum(len(store[key + "s"]) for store in document["stores"]), key) for key in ("folder", "message")]
    for name in folder.left_over():
        print(f"{name}: nothing names it" + (", removed" if options.clean else " (remove with --clean)"))
    if options.clean:
        folder.clean()
    print(f"{options.store}: sound; revision {document['revision']}, {', '.join(counts)}, "
          f"{counted(len(document['addressBook']['entries']), 'address book entry', 'address book entries')}")
    return DONE
