"""A desktop portal with global shortcuts, for dbusmock. Asked() gives what it was asked, in order,
and the signal WasAsked says that there is more.

Parameters:
  shortcuts  false: it has no global shortcuts
  registry   true: it wants to be told who asks
  refuses    the method that the user or the portal refuses
  misnumbers true: it binds shortcuts, and answers with the number of a failure
  early      true: it binds only shortcuts that are named with the session, and answers with them
  ignores    the method that is taken, but never responded to
  confuses   true: before each response, another request's refusal goes to the client, too
"""

import dbus
import dbus.lowlevel
from dbusmock import MOCK_IFACE

BUS_NAME = 'org.freedesktop.portal.Desktop'
MAIN_OBJ = '/org/freedesktop/portal/desktop'
MAIN_IFACE = 'org.freedesktop.portal.GlobalShortcuts'
SYSTEM_BUS = False

REGISTRY = 'org.freedesktop.host.portal.Registry'
REQUEST = 'org.freedesktop.portal.Request'
SESSION = 'org.freedesktop.portal.Session'


def load(mock, parameters):
    mock.asked = []
    mock.note = lambda line: note(mock, line)
    mock.sessions = []
    mock.client = None
    mock.refuses = parameters.get('refuses')
    mock.misnumbers = bool(parameters.get('misnumbers', False))
    mock.early = bool(parameters.get('early', False))
    mock.named = []
    mock.ignores = parameters.get('ignores')
    mock.confuses = bool(parameters.get('confuses', False))
    mock.has_registry = bool(parameters.get('registry', False))
    mock.has_shortcuts = bool(parameters.get('shortcuts', True))
    if mock.has_shortcuts:
        mock.AddProperties(MAIN_IFACE, {'version': dbus.UInt32(1)})


def note(mock, line):
    mock.asked.append(line)
    mock.connection.send_message(dbus.lowlevel.SignalMessage(MAIN_OBJ, MOCK_IFACE, 'WasAsked'))


def send(mock, path, interface, name, signature, *values):
    """Signals go to the client alone, as a portal's do."""
    signal = dbus.lowlevel.SignalMessage(path, interface, name)
    signal.set_destination(mock.client)
    signal.append(signature=signature, *values)
    mock.connection.send_message(signal)


def place(kind, sender, token):
    return f"{MAIN_OBJ}/{kind}/{sender[1:].replace('.', '_')}/{token}"


def unknown_method():
    return dbus.exceptions.DBusException('no such interface',
                                         name='org.freedesktop.DBus.Error.UnknownMethod')


def noting(text):
    """The code of a method that notes that it was called."""
    return f"objects['{MAIN_OBJ}'].note('{text}')"


def respond(mock, method, options, results):
    """Before the method returns: a client that subscribes only then is too late."""
    path = place('request', mock.client, options['handle_token'])
    mock.AddObject(path, REQUEST, {}, [('Close', '', '', noting('Close ' + method))])
    if mock.confuses:
        send(mock, MAIN_OBJ + '/request/1_1/other', REQUEST, 'Response', 'ua{sv}', 1,
             dbus.Dictionary({}, signature='sv'))
    if mock.ignores != method:
        refused = mock.refuses == method
        number = 1 if refused else 2 if mock.misnumbers and 'shortcuts' in results else 0
        nothing = {'shortcuts': dbus.Array([], signature='(sa{sv})')} if 'shortcuts' in results else {}
        send(mock, path, REQUEST, 'Response', 'ua{sv}', number,
             dbus.Dictionary(nothing if refused else results, signature='sv'))
    return dbus.ObjectPath(path)


@dbus.service.method(REGISTRY, in_signature='sa{sv}', out_signature='', sender_keyword='sender')
def Register(self, identifier, _options, sender=None):
    if not self.has_registry:
        raise unknown_method()
    self.note(f'Register {identifier}')


@dbus.service.method(MAIN_IFACE, in_signature='a{sv}', out_signature='o', sender_keyword='sender')
def CreateSession(self, options, sender=None):
    self.client = sender
    self.note('CreateSession')
    if not self.has_shortcuts:
        raise unknown_method()
    session = place('session', sender, options['session_handle_token'])
    self.sessions.append(session)
    self.named = [str(name) for name, _properties in options.get('shortcuts', [])]
    self.AddObject(session, SESSION, {}, [('Close', '', '', noting('Close session'))])
    results = {'session_handle': session}
    if self.early:
        results['shortcuts'] = dbus.Array(options.get('shortcuts', []), signature='(sa{sv})')
    return respond(self, 'CreateSession', options, results)


@dbus.service.method(MAIN_IFACE, in_signature='oa(sa{sv})sa{sv}', out_signature='o',
                     sender_keyword='sender')
def BindShortcuts(self, session, shortcuts, _parent, options, sender=None):
    self.client = sender
    for name, properties in shortcuts:
        known = 'own' if session in self.sessions else 'unknown'
        self.note(f"BindShortcuts {known} session: {name}, {properties['description']}, "
                  f"{properties['preferred_trigger']}")
    return respond(self, 'BindShortcuts', options, {'shortcuts': shortcuts})


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='as')
def Asked(self):
    """What the client asked, in order."""
    return dbus.Array(self.asked, signature='s')


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='s')
def Session(self):
    return self.sessions[-1]


@dbus.service.method(MOCK_IFACE, in_signature='s', out_signature='')
def Press(self, shortcut):
    trigger(self, 'Activated', shortcut, self.sessions[-1])


@dbus.service.method(MOCK_IFACE, in_signature='s', out_signature='')
def Release(self, shortcut):
    trigger(self, 'Deactivated', shortcut, self.sessions[-1])


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='')
def PressInAnotherSession(self):
    trigger(self, 'Activated', 'widget', MAIN_OBJ + '/session/1_1/other')


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='')
def EndSession(self):
    send(self, self.sessions[-1], SESSION, 'Closed', 'a{sv}', dbus.Dictionary({}, signature='sv'))
    self.RemoveObject(self.sessions[-1])


def trigger(mock, name, shortcut, session):
    if mock.early and shortcut not in mock.named:
        return
    send(mock, MAIN_OBJ, MAIN_IFACE, name, 'osta{sv}', dbus.ObjectPath(session), shortcut,
         dbus.UInt64(0), dbus.Dictionary({}, signature='sv'))
