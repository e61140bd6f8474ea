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
    <name>InitServerDialog</name>
    <message>
        <source>Process start error</source>
        <translation>Ошибка запуска процесса</translation>
    </message>
    <message>
        <source>Process finish error</source>
        <translation>Ошибка завершения процесса</translation>
    </message>
    <message>
        <source>File %1 can not be opened</source>
        <translation>Не удалось открыть файл %1</translation>
    </message>
    <message>
        <source>Write error in file %1</source>
        <translation>Ошибка записи в файл %1</translation>
    </message>
    <message>
        <source>File %1 can not be created</source>
        <translation>Не удалось создать файл %1</translation>
    </message>
    <message>
        <source>Error set permissions for file %1</source>
        <translation>Ошибка установки прав доступа к файлу %1</translation>
    </message>
    <message>
        <source>Initialization ORN server</source>
        <translation>Инициализация сервера ORN</translation>
    </message>
    <message>
        <source>System management console: ORN server</source>
        <translation>Консоль управления системой: сервер ORN</translation>
    </message>
    <message>
        <source>The directory-domain server is being created; stopping now would leave it half-built</source>
        <translation>Создаётся сервер домена каталога; прерывание сейчас оставит его недостроенным</translation>
    </message>
    <message>
        <source>The host is called %1, not %2: /etc/hosts is left as it is and orn-init is not started</source>
        <translation>Узел называется %1, а не %2: /etc/hosts оставлен без изменений, orn-init не запущен</translation>
    </message>
    <message>
        <source>The server creation was aborted.</source>
        <translation>Создание сервера прервано.</translation>
    </message>
    <message>
        <source>The server was not created: orn-init could not be started.</source>
        <translation>Сервер не создан: не удалось запустить orn-init.</translation>
    </message>
    <message>
        <source>The server was not created: orn-init crashed.</source>
        <translation>Сервер не создан: аварийное завершение orn-init.</translation>
    </message>
    <message>
        <source>The server was not created: orn-init exited with code %1.</source>
        <translation>Сервер не создан: код завершения orn-init — %1.</translation>
    </message>
    <message>
        <source>The server has been created.</source>
        <translation>Сервер создан.</translation>
    </message>
    <message>
        <source>Tool output</source>
        <translation>Вывод программы</translation>
    </message>
    <message>
        <source>Creation progress</source>
        <translation>Ход создания сервера</translation>
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
    <message>
        <source>Re-create server</source>
        <translation>Пересоздать сервер</translation>
    </message>
    <message>
        <source>on</source>
        <translation>запущен</translation>
    </message>
    <message>
        <source>off</source>
        <translation>остановлен</translation>
    </message>
    <message>
        <source>ORN server will be created with support of mandatory labes</source>
        <translation>Сервер ORN будет создан с поддержкой мандатных меток</translation>
    </message>
    <message>
        <source>ORN server will be created without support of mandatory labes (package required orn-server-common)</source>
        <translation>Сервер ORN будет создан без поддержки мандатных меток (требуется пакет orn-server-common)</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Ошибка</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Предупреждение</translation>
    </message>
    <message>
        <source>The creation of the server will destroy the entire database LDAP and Kerberos! Also during execution of this command can be stopped and restarted LDAP, Kerberos NFS/Samba and some other services!
Do you really want to continue?</source>
        <translation>Создание сервера уничтожит всю базу данных LDAP и Kerberos! Кроме того, во время выполнения команды могут быть остановлены и перезапущены LDAP, Kerberos, NFS/Samba и некоторые другие службы!
Вы действительно хотите продолжить?</translation>
    </message>
    <message>
        <source>Hostname was changed but server initialization was not successful. After correctly configuring server recommended to reboot.</source>
        <translation>Имя узла изменено, но инициализация сервера не удалась. После правильной настройки сервера рекомендуется перезагрузка.</translation>
    </message>
    <message>
        <source>Reboot</source>
        <translation>Перезагрузка</translation>
    </message>
    <message>
        <source>Hostname was changed. For correct operation of the system you must reboot.
Do you want reboot now?</source>
        <translation>Имя узла изменено. Для корректной работы системы необходима перезагрузка.
Перезагрузить сейчас?</translation>
    </message>
    <message>
        <source>orn.conf is opened in the editor as the desktop user who started the console through sudo, but SUDO_USER names no such user. Start the console with sudo from the desktop session.</source>
        <translation>orn.conf открывается в редакторе от имени пользователя рабочего стола, запустившего консоль через sudo, но SUDO_USER не называет такого пользователя. Запустите консоль через sudo из сеанса рабочего стола.</translation>
    </message>
    <message>
        <source>Another console is creating the server on this host. Wait until it has finished, then try again.</source>
        <translation>На этом узле сервер уже создаётся из другой консоли. Дождитесь окончания и повторите попытку.</translation>
    </message>
    <message>
        <source>The lock %1, which keeps two consoles from creating the server at once, cannot be taken: %2</source>
        <translation>Не удалось захватить блокировку %1, не позволяющую двум консолям создавать сервер одновременно: %2</translation>
    </message>
    <message>
        <source>IP address is empty</source>
        <translation>Не указан IP-адрес</translation>
    </message>
    <message>
        <source>Hostname contains a blank or a control character</source>
        <translation>Имя узла содержит пробел или управляющий символ</translation>
    </message>
    <message>
        <source>Hostname can hold only Latin letters, digits, hyphens and dots, at most 64 characters; a part between dots may not be empty, nor begin or end with a hyphen</source>
        <translation>Имя узла может содержать только латинские буквы, цифры, дефисы и точки, не более 64 символов; часть между точками не может быть пустой, начинаться или заканчиваться дефисом</translation>
    </message>
    <message>
        <source>Domain name contains a blank or a control character</source>
        <translation>Имя домена содержит пробел или управляющий символ</translation>
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
