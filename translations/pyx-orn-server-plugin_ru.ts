<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>OrnServerPlugin</name>
    <message>
        <source>OrnServerPlugin</source>
        <translation>Модуль сервера ORN</translation>
    </message>
    <message>
        <source>Support ORN server</source>
        <translation>Поддержка сервера ORN</translation>
    </message>
</context>
</TS>
