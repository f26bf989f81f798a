"""Decimals, message texts, dates, base64 and CRC-32 of the library nomutil, through ctypes.

    >>> from nomutil import Decimal, message
    >>> str(Decimal("0.1") + Decimal("0.2"))
    '0.3'
    >>> message(1002)
    'Invalid parameter value'

No compiler is needed. What fails raises NomutilError with the status number and its text. The
library is the one that the environment variable NOMUTIL_LIBRARY names, or lies in the tree where
this file is installed, or where the system looks. `python3 -m nomutil selftest` compares results
with those of Python's own modules.
"""

import ctypes
import datetime
import decimal
import math
import os
import pathlib
import re
import sys

_WINDOWS = os.name == "nt"
_FILE = "nomutil.dll" if _WINDOWS else "libnomutil.so.1"
# How the compiler writes 64-bit integers in the names of functions.
_LONG, _ULONG = ("x", "y") if _WINDOWS else ("l", "m")

OVERFLOW = 1422  # "Result of expression overflows Decimal precision"
NO_ROOM = -100  # an exhausted heap


def _load():
    named = os.environ.get("NOMUTIL_LIBRARY")
    if named:
        return ctypes.CDLL(os.path.abspath(named))
    # <prefix>/share/nomutil/python/nomutil.py
    parents = pathlib.Path(__file__).resolve().parents
    if len(parents) > 3:
        for pattern in ("bin/", "lib/", "lib/*/", "lib64/"):
            for path in sorted(parents[3].glob(pattern + _FILE)):
                return ctypes.CDLL(str(path))
    return ctypes.CDLL(_FILE)


_library = _load()


class _Stored(ctypes.Structure):
    """DskDecimal of sys/decimals.h."""
    _fields_ = [("precision", ctypes.c_uint8), ("scaleFactor", ctypes.c_uint8),
                ("value", ctypes.c_uint8 * 10), ("reserved", ctypes.c_uint8 * 4)]


class _TimeStamp(ctypes.Structure):
    """DskTimeStamp of nomos/calendar.h."""
    _fields_ = [("date", ctypes.c_uint32), ("time", ctypes.c_uint32)]


class _OffsetStamp(ctypes.Structure):
    """DskTimeStampOffset of sys/datetime.h."""
    _fields_ = [*_TimeStamp._fields_, ("bias", ctypes.c_int32)]


def _function(name, result, *arguments):
    function = getattr(_library, name)
    function.restype = result
    function.argtypes = arguments
    return function


_bool, _int, _unsigned, _char_p = ctypes.c_bool, ctypes.c_int, ctypes.c_uint32, ctypes.c_char_p
_stored_p, _bytes_p = ctypes.POINTER(_Stored), ctypes.POINTER(ctypes.c_uint8)
_unsigned_p = ctypes.POINTER(_unsigned)

_message_text = _function("nomGetMessageText", _int, _unsigned, _char_p, _unsigned)
_three = (_bool, _stored_p, _stored_p, _stored_p)
_add = _function("_Z13nomDecimalAddPK10DskDecimalS1_PS_", *_three)
_subtract = _function("_Z18nomDecimalSubtractPK10DskDecimalS1_PS_", *_three)
_multiply = _function("_Z18nomDecimalMultiplyPK10DskDecimalS1_PS_", *_three)
_divide = _function("_Z20nomDecimalRealDividePK10DskDecimalS1_PS_", *_three)
_integer_divide = _function("_Z23nomDecimalIntegerDividePK10DskDecimalS1_PS_S2_", *_three,
                            _stored_p)
_compare = _function("nomDecimalCompare", _int, _stored_p, _stored_p)
_from_text = _function("nomDecimalFromString", _bool, _char_p, _stored_p)
_from_real = _function("nomDecimalFromReal", _bool, ctypes.c_double, _stored_p)
_to_text = _function("nomDecimalToString", _bool, _stored_p, _char_p, _unsigned, _unsigned)
_to_real = _function("nomDecimalToReal", _bool, _stored_p, ctypes.POINTER(ctypes.c_double))
_to_int64 = _function(f"_Z17nomDecimalToInt64PK10DskDecimalP{_LONG}", _bool, _stored_p,
                      ctypes.POINTER(ctypes.c_int64))
_day_from = _function("nosDskDateFromGregorian", _unsigned, _int, _int, _int)
_day_to = _function("nosDskDateToGregorian", None, _unsigned, *[ctypes.POINTER(_int)] * 3)
_date_text = _function("_Z10formatDatejPcj", ctypes.c_void_p, _unsigned, _char_p, _unsigned)
_time_text = _function("_Z10formatTimejPcj", ctypes.c_void_p, _unsigned, _char_p, _unsigned)
_stamp_text = _function("_Z15formatTimeStampRK12DskTimeStampPcj", ctypes.c_void_p,
                        ctypes.POINTER(_TimeStamp), _char_p, _unsigned)
_stamp_literal = _function("_Z22literalFormatTimeStamp12DskTimeStampPcj", None, _TimeStamp,
                           _char_p, _unsigned)
_read_date = _function("_Z11extractDatePKc", _unsigned, _char_p)
_read_time = _function("_Z11extractTimePKc", _unsigned, _char_p)
_read_stamp = _function("_Z16extractTimeStampPKcR12DskTimeStamp", ctypes.c_void_p, _char_p,
                        ctypes.POINTER(_TimeStamp))
_read_offset = _function("_Z22extractTimeStampOffsetPKcR18DskTimeStampOffset", ctypes.c_void_p,
                         _char_p, ctypes.POINTER(_OffsetStamp))
_read_interval = _function("_Z24extractTimeStampIntervalPKcR20DskTimeStampInterval",
                           ctypes.c_void_p, _char_p, ctypes.POINTER(ctypes.c_int64))
_encode = _function("_Z12base64EncodePKhjRPcRjb", _int, _char_p, _unsigned,
                    ctypes.POINTER(ctypes.c_void_p), _unsigned_p, _bool)
_decode = _function("_Z22base64DecodeWithLengthPKcjRPhRj", _int, _char_p, _unsigned,
                    ctypes.POINTER(ctypes.c_void_p), _unsigned_p)
_free_text = _function("_Z10base64FreeRPc", None, ctypes.POINTER(ctypes.c_void_p))
_free_bytes = _function("_Z10base64FreeRPh", None, ctypes.POINTER(ctypes.c_void_p))
_crc = None
if hasattr(_library, "_Z13compute_CRC32PvPjS0_"):
    _crc = _function("_Z13compute_CRC32PvPjS0_", _unsigned, _char_p, _unsigned_p, _unsigned_p)


class NomutilError(Exception):
    """What the library refused: status, its number, and text, what the number means."""

    def __init__(self, status, text=None):
        self.status = status
        self.text = text if text is not None else _text_of(status)[1]
        super().__init__(f"{self.status}: {self.text}")


def _text_of(number):
    if number == NO_ROOM:
        return 0, "The heap is exhausted"
    buffer = ctypes.create_string_buffer(1024)
    status = _message_text(number & 0xFFFFFFFF, buffer, len(buffer))
    return status, buffer.value.decode("cp1252", "replace")


def message(number):
    """The text of a status number. A number without a text raises NomutilError."""
    status, text = _text_of(number)
    if status != 0:
        raise NomutilError(status, text)
    return text


def _check(status):
    if status != 0:
        raise NomutilError(status)


class Decimal:
    """An exact decimal of up to 23 digits in its stored form; it never changes.

    Made from a text, an int, a float (its shortest text), a decimal.Decimal or another Decimal. A
    text that is no number raises ValueError; a value beyond 23 digits raises NomutilError.

    The operators are those of the library. // cuts toward zero and % has the sign of the dividend,
    as with decimal.Decimal and unlike int: -7 // 2 is -3 here and -4 there. What is rounded goes to
    the nearest, a half away from zero: round(2.5) is 3 here, and 2 with Python's own numbers.
    """

    __slots__ = ("_stored",)
    _NUMBER = re.compile(r"\s*[+-]?(\d+\.?\d*|\.\d+)\s*", re.ASCII)

    def __init__(self, value="0"):
        self._stored = _Stored()
        if isinstance(value, Decimal):
            ctypes.pointer(self._stored)[0] = value._stored
            return
        if isinstance(value, float):
            if not math.isfinite(value):
                raise ValueError(f"{value} is no decimal")
            stored = _from_real(value, self._stored)
        else:
            text = f"{value:f}" if isinstance(value, decimal.Decimal) else str(value)
            if isinstance(value, bool) or not self._NUMBER.fullmatch(text):
                raise ValueError(f"{value!r} is no decimal")
            stored = _from_text(text.strip().encode("ascii"), self._stored)
        if not stored:
            raise NomutilError(OVERFLOW)

    def stored(self):
        """The 16 bytes of the stored form (docs/formats/decimal.md)."""
        return bytes(self._stored)

    @property
    def places(self):
        """How many decimal places it has."""
        return self._stored.scaleFactor

    def text(self, places=None):
        """The value with so many places, rounded half away from zero; without, its own."""
        places = self.places if places is None else places
        if not 0 <= places <= 100:
            raise ValueError("0 to 100 places")
        buffer = ctypes.create_string_buffer(160)
        _to_text(self._stored, buffer, len(buffer), places)
        if buffer.value.startswith(b"*"):  # more than 103 characters
            raise NomutilError(OVERFLOW)
        return buffer.value.decode("ascii")

    def quotient_and_remainder(self, divisor):
        """The integer quotient, cut toward zero, and the remainder with the dividend's sign."""
        quotient, remainder = Decimal(), Decimal()
        # The function leaves a part that does not fit untouched.
        quotient._stored.precision = remainder._stored.precision = 255
        _integer_divide(self._stored, self._divisor(divisor)._stored, quotient._stored,
                        remainder._stored)
        if 255 in (quotient._stored.precision, remainder._stored.precision):
            raise NomutilError(OVERFLOW)
        return quotient, remainder

    @staticmethod
    def _operand(value):
        if isinstance(value, (int, decimal.Decimal)) and not isinstance(value, bool):
            return Decimal(value)
        return value if isinstance(value, Decimal) else None

    @classmethod
    def _divisor(cls, value):
        divisor = cls._operand(value)
        if divisor is None:
            raise TypeError(f"no decimal: {value!r}")
        if not divisor:
            raise ZeroDivisionError("division of a decimal by zero")
        return divisor

    @classmethod
    def _operate(cls, function, left, right):
        left, right = cls._operand(left), cls._operand(right)
        if left is None or right is None:
            return NotImplemented
        if function is _divide:
            cls._divisor(right)
        result = Decimal()
        if not function(left._stored, right._stored, result._stored):
            raise NomutilError(OVERFLOW)
        return result

    def __add__(self, other):
        return self._operate(_add, self, other)

    def __radd__(self, other):
        return self._operate(_add, other, self)

    def __sub__(self, other):
        return self._operate(_subtract, self, other)

    def __rsub__(self, other):
        return self._operate(_subtract, other, self)

    def __mul__(self, other):
        return self._operate(_multiply, self, other)

    __rmul__ = __mul__

    def __truediv__(self, other):
        return self._operate(_divide, self, other)

    def __rtruediv__(self, other):
        return self._operate(_divide, other, self)

    @classmethod
    def _divmod(cls, left, right):
        left, right = cls._operand(left), cls._operand(right)
        if left is None or right is None:
            return NotImplemented
        return left.quotient_and_remainder(right)

    def __divmod__(self, other):
        return self._divmod(self, other)

    def __rdivmod__(self, other):
        return self._divmod(other, self)

    @classmethod
    def _part(cls, left, right, index):
        parts = cls._divmod(left, right)
        return parts if parts is NotImplemented else parts[index]

    def __floordiv__(self, other):
        return self._part(self, other, 0)

    def __rfloordiv__(self, other):
        return self._part(other, self, 0)

    def __mod__(self, other):
        return self._part(self, other, 1)

    def __rmod__(self, other):
        return self._part(other, self, 1)

    def __neg__(self):
        return Decimal(0) - self

    def __pos__(self):
        return self

    def __abs__(self):
        return -self if self < 0 else self

    def __round__(self, digits=None):
        """An int; with digits a Decimal of so many places at most, if negative before the point."""
        if digits is None:
            return int(Decimal(self.text(0)))
        if digits >= 0:
            return Decimal(self.text(digits)) if digits < self.places else self
        if digits < -22:
            raise ValueError("-22 digits or more")
        unit = Decimal(10 ** -digits)
        quotient, remainder = self.quotient_and_remainder(unit)
        if abs(remainder) * 2 >= unit:
            quotient += -1 if self < 0 else 1
        return quotient * unit

    def __format__(self, form):
        """As format of a decimal.Decimal, but never with an exponent that is not asked for."""
        if not form:
            return str(self)
        with decimal.localcontext(decimal.Context(prec=60, rounding=decimal.ROUND_HALF_UP)):
            form += "" if form[-1] in "eEfFgGn%" else "f"
            return format(decimal.Decimal(str(self)), form)

    def __bool__(self):
        return any(self._stored.value[:self._stored.precision])

    def _order(self, other):
        other = self._operand(other)
        return None if other is None else _compare(self._stored, other._stored)

    def __eq__(self, other):
        order = self._order(other)
        return NotImplemented if order is None else order == 0

    def __lt__(self, other):
        order = self._order(other)
        return NotImplemented if order is None else order < 0

    def __le__(self, other):
        order = self._order(other)
        return NotImplemented if order is None else order <= 0

    def __gt__(self, other):
        order = self._order(other)
        return NotImplemented if order is None else order > 0

    def __ge__(self, other):
        order = self._order(other)
        return NotImplemented if order is None else order >= 0

    def __hash__(self):
        return hash(decimal.Decimal(str(self)))  # of the value: 12.5 and 12.50 have one

    def __int__(self):
        out = ctypes.c_int64()
        return out.value if _to_int64(self._stored, out) else int(decimal.Decimal(str(self)))

    def __float__(self):
        out = ctypes.c_double()
        _to_real(self._stored, out)
        return out.value

    def __str__(self):
        return self.text()

    def __repr__(self):
        return f"Decimal('{self}')"


_FIRST_DAY, _LAST_DAY = 1721426, 5373484  # 1 January 1, 31 December 9999
_INVALID = 0xFFFFFFFF  # date or time


def day_number(date):
    """The Julian day number of a datetime.date: 2440588 for 1 January 1970."""
    return _day_from(date.day, date.month, date.year)


def date_of(number):
    """The datetime.date of a day number, one of 1721426 to 5373484; else ValueError."""
    if not _FIRST_DAY <= number <= _LAST_DAY:
        raise ValueError(f"the day number {number} is none of the years 1 to 9999")
    day, month, year = _int(), _int(), _int()
    _day_to(number, day, month, year)
    return datetime.date(year.value, month.value, day.value)


def _milliseconds(time):
    return ((time.hour * 60 + time.minute) * 60 + time.second) * 1000 + time.microsecond // 1000


def _stamp(stamp):
    return _TimeStamp(day_number(stamp), _milliseconds(stamp))


def _formatted(function, value):
    buffer = ctypes.create_string_buffer(64)
    function(value, buffer, len(buffer))
    return buffer.value.decode("ascii")


def format_date(date):
    """'05 January 2024'. Takes a datetime.date or a day number."""
    number = date if isinstance(date, int) else day_number(date)
    return _formatted(_date_text, number)


def format_time(time):
    """'14:07:09'. Takes a datetime.time or milliseconds since midnight."""
    return _formatted(_time_text, time if isinstance(time, int) else _milliseconds(time))


def format_timestamp(stamp):
    """'05 January 2024, 14:07:09'. Takes a datetime.datetime."""
    return _formatted(_stamp_text, _stamp(stamp))


def literal_timestamp(stamp):
    """'2024:01:05:14:07:09.042'. Takes a datetime.datetime, and cuts it to milliseconds."""
    return _formatted(_stamp_literal, _stamp(stamp))


def _text(text):
    return text.encode("cp1252", "replace")


def _time_of(milliseconds):
    seconds, milliseconds = divmod(milliseconds, 1000)
    minutes, second = divmod(seconds, 60)
    return datetime.time(minutes // 60, minutes % 60, second, milliseconds * 1000)


def _datetime_of(stamp, text):
    if stamp.date == 0 and stamp.time == 0:
        return None
    if not _FIRST_DAY <= stamp.date <= _LAST_DAY or stamp.time >= 86400000:
        raise ValueError(f"no timestamp: {text!r}")
    return datetime.datetime.combine(date_of(stamp.date), _time_of(stamp.time))


def read_date(text):
    """The datetime.date of '25/12/2023', '2023-12-25' or 'December 25, 2023'; None of ''.

    sys/datetime.h says what is read. As with all readers here, what is no value raises ValueError.
    """
    number = _read_date(_text(text))
    if number == _INVALID:
        raise ValueError(f"no date: {text!r}")
    return date_of(number) if number else None


def read_time(text):
    """The datetime.time of '10:30' or '10:30:15.5 pm'."""
    milliseconds = _read_time(_text(text))
    if milliseconds == _INVALID:
        raise ValueError(f"no time: {text!r}")
    return _time_of(milliseconds)


def read_timestamp(text):
    """The datetime.datetime of a date with a time behind it, or midnight; None of ''."""
    stamp = _TimeStamp()
    _read_stamp(_text(text), stamp)
    return _datetime_of(stamp, text)


def read_timestamp_offset(text):
    """The datetime.datetime of '25/12/2023 10:30:00 +1300', with its zone; None of ''."""
    stamp = _OffsetStamp()
    _read_offset(_text(text), stamp)
    moment = _datetime_of(stamp, text)
    zone = datetime.timezone(datetime.timedelta(minutes=-stamp.bias)) if moment else None
    return moment and moment.replace(tzinfo=zone)


def read_interval(text):
    """The datetime.timedelta of '-1:02:03:04.005': days, then a time."""
    milliseconds = ctypes.c_int64()
    _read_interval(_text(text), milliseconds)
    if milliseconds.value == -1 << 63:
        raise ValueError(f"no interval: {text!r}")
    return datetime.timedelta(milliseconds=milliseconds.value)


def base64_encode(data, lines=False):
    """The base64 text of bytes; with lines, lines of 76 characters with CR LF between them."""
    data, block, length = bytes(data), ctypes.c_void_p(), _unsigned()
    _check(_encode(data, len(data), block, length, not lines))
    try:
        return ctypes.string_at(block, length.value).decode("ascii")
    finally:
        _free_text(block)


def base64_decode(text):
    """The bytes of a base64 text, read leniently: other characters are skipped."""
    data = text if isinstance(text, bytes) else text.encode("utf-8")
    block, length = ctypes.c_void_p(), _unsigned()
    try:
        _check(_decode(data, len(data), block, length))
        return ctypes.string_at(block, length.value) if block else b""
    finally:
        _free_bytes(block)


def crc32(data, crc=0):
    """The usual CRC-32 of bytes: crc32(b'123456789') is 0xCBF43926. Goes on from crc."""
    if _crc is None:
        raise NotImplementedError("this build of the library has no CRC-32")
    data = bytes(data)
    return _crc(data, _unsigned(len(data)), _unsigned(crc ^ 0xFFFFFFFF)) ^ 0xFFFFFFFF


def _refused(function, *arguments):
    try:
        return function(*arguments)
    except (NomutilError, ValueError, ZeroDivisionError) as error:
        return str(error)


def _selftest():
    """Compares results with Python's own modules; yields (what, found, expected)."""
    import base64
    import random
    import zlib

    overflow = "1422: Result of expression overflows Decimal precision"
    yield "0.1 + 0.2", str(Decimal("0.1") + Decimal("0.2")), "0.3"
    yield "1 / 3", str(Decimal(1) / 3), "0." + "3" * 23
    yield "largest + 1", _refused(lambda: Decimal("9" * 23) + 1), overflow
    yield "24 digits", _refused(Decimal, "1" * 24), overflow
    yield "stored", Decimal("12.50").stored()[:4], bytes((2, 2, 0xE2, 0x04))
    yield "message", message(1002), "Invalid parameter value"
    yield "cut text", _refused(base64_decode, "TWF"), "1420: Base64 Decoding failed"
    yield "a long time ago", format_date(datetime.date(1601, 1, 1)), "01 January 1601"
    yield "null date", format_date(0), ""
    yield "no time", format_time(0xFFFFFFFF), "*invalid*"
    for number in (0, 1721425, 5373485, -1, 1 << 40):
        yield f"day {number}", _refused(date_of, number), \
            f"the day number {number} is none of the years 1 to 9999"
    yield "% 0", _refused(lambda: 7 % Decimal("0.0")), "division of a decimal by zero"
    yield "104 characters", _refused(Decimal(123).text, 100), overflow
    yield "-7 // 2", (str(Decimal(-7) // 2), str(Decimal(-7) % 2)), ("-3", "-1")
    for text, digits in (("2.5", 0), ("-0.5", 0), ("0.125", 2), ("-25", -1), ("24", -1)):
        rounded = decimal.Decimal(text).quantize(decimal.Decimal(1).scaleb(-digits),
                                                 decimal.ROUND_HALF_UP)
        yield f"round {text}", decimal.Decimal(str(round(Decimal(text), digits))), rounded
    yield "rounded over the largest", _refused(round, Decimal("9" * 23), -1), overflow
    for text in ("29.2.2023", "25/12", "now"):
        yield text, _refused(read_date, text), f"no date: {text!r}"
    yield "empty date", read_date(""), None
    yield "empty timestamp", (read_timestamp(""), read_timestamp_offset("")), (None, None)
    yield "24:00", _refused(read_time, "24:00"), "no time: '24:00'"
    yield "half past", read_time("10.30 p.m."), datetime.time(22, 30)
    yield "zone", _refused(read_timestamp_offset, "1/1/2024 10:30:00 +1500"), \
        "no timestamp: '1/1/2024 10:30:00 +1500'"
    yield "interval", read_interval("-1:02:03:04.005"), \
        -datetime.timedelta(1, 2 * 3600 + 3 * 60 + 4, 5000)
    yield "no interval", _refused(read_interval, "1 day"), "no interval: '1 day'"

    seed = random.SystemRandom().randrange(1 << 32)
    draw = random.Random(seed)
    exact = decimal.Context(prec=60)
    for _ in range(500):
        left, right = (decimal.Decimal(draw.randrange(-10**11, 10**11)).scaleb(-draw.randrange(9))
                       for _ in range(2))
        ours, theirs = Decimal(left), Decimal(right)
        case = f"{left:f} and {right:f}, seed {seed}"
        yield f"sum of {case}", str(ours + theirs), f"{exact.add(left, right):f}"
        yield f"difference of {case}", str(ours - theirs), f"{exact.subtract(left, right):f}"
        yield f"product of {case}", decimal.Decimal(str(ours * theirs)), exact.multiply(left, right)
        yield f"order of {case}", (ours < theirs, ours == theirs), (left < right, left == right)
        if right:
            parts = tuple(decimal.Decimal(str(n)) for n in ours.quotient_and_remainder(theirs))
            yield f"division of {case}", parts, exact.divmod(left, right)
            found = (ours // theirs, ours % right, left // theirs, left % theirs)
            yield f"// and % of {case}", tuple(decimal.Decimal(str(n)) for n in found), parts * 2
        digits = draw.randrange(-12, 10)
        rounded = left.quantize(decimal.Decimal(1).scaleb(-digits), decimal.ROUND_HALF_UP, exact)
        yield f"{digits} digits of {case}", decimal.Decimal(str(round(ours, digits))), rounded
        yield f"whole of {case}", round(ours), int(left.to_integral_value(decimal.ROUND_HALF_UP))
        yield f"size of {case}", decimal.Decimal(str(abs(ours))), abs(left)
        places = draw.randrange(12)
        shown = left.quantize(decimal.Decimal(1).scaleb(-places), decimal.ROUND_HALF_UP, exact)
        yield f"form of {case}", f"{ours:>+30,.{places}f}", f"{shown:>+30,f}"
        yield f"form without places of {case}", f"{ours:x>30}", f"{left:f}".rjust(30, "x")

        date = datetime.date.fromordinal(draw.randrange(1, datetime.date.max.toordinal() + 1))
        yield f"day number of {date}", day_number(date), date.toordinal() + 1721425
        yield f"date of {date}", date_of(day_number(date)), date
        stamp = datetime.datetime.combine(date, datetime.time(*map(
            draw.randrange, (24, 60, 60, 10**6))))
        literal = f"{stamp.year:04}:{stamp:%m:%d:%H:%M:%S}"
        if stamp.microsecond >= 1000:
            literal += f".{stamp.microsecond // 1000:03}"
        yield f"literal of {stamp}", literal_timestamp(stamp), literal

        day, year = f"{date:%d}", f"{date.year:04}"
        month = ("Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec").split()[date.month - 1]
        for text in (f"{day}/{date:%m}/{year}", f"{year}-{date:%m-%d}", f"{month} {day}, {year}"):
            yield text, read_date(text), date
        whole = stamp.replace(microsecond=stamp.microsecond // 1000 * 1000)
        text = f"{year}-{date:%m-%d} {stamp:%H:%M:%S}.{stamp.microsecond // 1000:03}"
        yield text, read_timestamp(text), whole
        hours, minutes = draw.randrange(-13, 14), draw.randrange(60)
        sign = -1 if hours < 0 else 1
        zone = datetime.timezone(sign * datetime.timedelta(hours=abs(hours), minutes=minutes))
        text = f"{year}-{date:%m-%d} {stamp:%H:%M:%S} {sign * (abs(hours) * 100 + minutes):+05}"
        found = read_timestamp_offset(text)
        yield text, (found, found.utcoffset()), (stamp.replace(microsecond=0, tzinfo=zone),
                                                 zone.utcoffset(None))

        data = draw.randbytes(draw.randrange(200))
        case = f"{data.hex()}, seed {seed}"
        yield f"base64 of {case}", base64_encode(data), base64.b64encode(data).decode()
        lines = base64.encodebytes(data).decode().rstrip("\n").replace("\n", "\r\n")
        yield f"base64 lines of {case}", base64_encode(data, lines=True), lines
        yield f"decoded {case}", base64_decode(lines), data
        if _crc:
            yield f"CRC-32 of {case}", crc32(data[7:], crc32(data[:7])), zlib.crc32(data)


def _main(arguments):
    if arguments != ["selftest"]:
        print("usage: python3 -m nomutil selftest", file=sys.stderr)
        return 2
    count = failed = 0
    for what, found, expected in _selftest():
        count += 1
        if found != expected:
            failed += 1
            print(f"{what}: {found!r} instead of {expected!r}")
    print(f"{count} comparisons, {failed} failed" + ("" if _crc else "; no CRC-32 in this build"))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(_main(sys.argv[1:]))
