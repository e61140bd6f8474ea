<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>Element</name>
    <message>
        <source>ORN server</source>
        <translation>Сервер ORN</translation>
    </message>
    <message>
        <source>ORN Server</source>
        <translation>Сервер ORN</translation>
    </message>
</context>
<context>
    <name>Module</name>
    <message>
        <source>Module for ORN server creating</source>
        <translation>Модуль создания сервера ORN</translation>
    </message>
</context>
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
<context>
    <name>OrnServerWidget</name>
    <message>
        <source>Kerberos</source>
        <translation>Kerberos:</translation>
    </message>
    <message>
        <source>password do not match</source>
        <translation>пароли не совпадают</translation>
    </message>
    <message>
        <source>ORN admin</source>
        <translation>Администратор ORN:</translation>
    </message>
    <message>
        <source>Hostname is empty</source>
        <translation>Не задано имя узла</translation>
    </message>
    <message>
        <source>Domain name is empty</source>
        <translation>Не задано имя домена</translation>
    </message>
    <message>
        <source>password is empty</source>
        <translation>пароль не задан</translation>
    </message>
    <message>
        <source>ORN server creation</source>
        <translation>Создание сервера ORN</translation>
    </message>
    <message>
        <source>Kerberos database password</source>
        <translation>Пароль базы данных Kerberos</translation>
    </message>
    <message>
        <source>ORN admin password</source>
        <translation>Пароль администратора ORN</translation>
    </message>
    <message>
        <source>Repeat Kerberos password</source>
        <translation>Повторите пароль Kerberos</translation>
    </message>
    <message>
        <source>Repeat ORN admin password</source>
        <translation>Повторите пароль администратора ORN</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Состояние</translation>
    </message>
    <message>
        <source>Use custom network settings</source>
        <translation>Задать сетевые параметры вручную</translation>
    </message>
    <message>
        <source>IP address</source>
        <translation>IP-адрес</translation>
    </message>
    <message>
        <source>Hostname</source>
        <translation>Имя узла</translation>
    </message>
    <message>
        <source>Domain name</source>
        <translation>Имя домена</translation>
    </message>
    <message>
        <source>Server name:</source>
        <translation>Имя сервера:</translation>
    </message>
    <message>
        <source>Expert mode</source>
        <translation>Режим эксперта</translation>
    </message>
    <message>
        <source>Network settings</source>
        <translation>Сетевые параметры</translation>
    </message>
    <message>
        <source>Edit orn.conf</source>
        <translation>Изменить orn.conf</translation>
    </message>
    <message>
        <source>Create server</source>
        <translation>Создать сервер</translation>
    </message>
    <message>
        <source>ORN server will be created and runing on current work station.</source>
        <translation>Сервер ORN будет создан и запущен на данной рабочей станции.</translation>
    </message>
    <message>
        <source>File /etc/hosts always should contain a server IP address, domain and hostname.</source>
        <translation>Файл /etc/hosts всегда должен содержать IP-адрес сервера, домен и имя узла.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Read ORN server information</source>
        <translation>Чтение сведений о сервере ORN</translation>
    </message>
    <message>
        <source>Domain core not initialized</source>
        <translation>Ядро домена не инициализировано</translation>
    </message>
    <message>
        <source>Process error %1 %2</source>
        <translation>Ошибка процесса %1 %2</translation>
    </message>
</context>
</TS>
