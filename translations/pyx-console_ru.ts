<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>ConsoleWindow</name>
    <message>
        <source>System management console[*]</source>
        <translation>Консоль управления системой[*]</translation>
    </message>
    <message>
        <source>Select an element on the left.</source>
        <translation>Выберите элемент слева.</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Готово</translation>
    </message>
    <message>
        <source>%1: did not complete</source>
        <translation>%1: не завершено</translation>
    </message>
    <message>
        <source>%1: failed: %2</source>
        <translation>%1: ошибка: %2</translation>
    </message>
    <message>
        <source>%1: warning: %2</source>
        <translation>%1: предупреждение: %2</translation>
    </message>
    <message>
        <source>%1: done</source>
        <translation>%1: выполнено</translation>
    </message>
</context>
<context>
    <name>NodeTreeModel</name>
    <message>
        <source>%1 (unavailable)</source>
        <translation>%1 (недоступно)</translation>
    </message>
    <message>
        <source>The plug-in has no modules</source>
        <translation>В подключаемом модуле нет модулей</translation>
    </message>
</context>
<context>
    <name>OrnDomainElement</name>
    <message>
        <source>Directory domain</source>
        <translation>Домен каталога</translation>
    </message>
    <message>
        <source>Directory domain %1</source>
        <translation>Домен каталога %1</translation>
    </message>
</context>
<context>
    <name>OrnDomainModule</name>
    <message>
        <source>Directory domain management</source>
        <translation>Управление доменом каталога</translation>
    </message>
</context>
<context>
    <name>PluginRegistry</name>
    <message>
        <source>Not a plug-in: %1</source>
        <translation>Не подключаемый модуль: %1</translation>
    </message>
    <message>
        <source>Unsupported interface &quot;%1&quot;; expected &quot;%2&quot;</source>
        <translation>Интерфейс «%1» не поддерживается; ожидался «%2»</translation>
    </message>
    <message>
        <source>The plug-in object does not implement &quot;%1&quot;</source>
        <translation>Объект подключаемого модуля не реализует «%1»</translation>
    </message>
    <message>
        <source>The plug-in cannot work on this machine</source>
        <translation>Подключаемый модуль не может работать на этом компьютере</translation>
    </message>
    <message>
        <source>Cannot load: %1</source>
        <translation>Не удалось загрузить: %1</translation>
    </message>
</context>
<context>
    <name>TreeNode</name>
    <message>
        <source>Name</source>
        <translation>Имя</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>System management console (stand-in).</source>
        <translation>Консоль управления системой (замена для проб).</translation>
    </message>
    <message>
        <source>Load the plug-ins of &lt;folder&gt;.</source>
        <translation>Загрузить подключаемые модули из папки &lt;folder&gt;.</translation>
    </message>
    <message>
        <source>Select the element of &lt;type&gt; at start.</source>
        <translation>При запуске выбрать элемент типа &lt;type&gt;.</translation>
    </message>
    <message>
        <source>Save the window to &lt;file&gt; once the selected element has been read, then exit.</source>
        <translation>Сохранить окно в &lt;file&gt;, когда выбранный элемент прочитан, и выйти.</translation>
    </message>
    <message>
        <source>Start without a directory core.</source>
        <translation>Запустить без ядра каталога.</translation>
    </message>
    <message>
        <source>Start logged in to the directory domain.</source>
        <translation>Запустить с входом в домен каталога.</translation>
    </message>
    <message>
        <source>Print each plug-in file and its state, then exit.</source>
        <translation>Вывести файл каждого подключаемого модуля и его состояние, затем выйти.</translation>
    </message>
    <message>
        <source>enabled</source>
        <translation>включён</translation>
    </message>
    <message>
        <source>No element of type %1.</source>
        <translation>Нет элемента типа %1.</translation>
    </message>
    <message>
        <source>Cannot write %1.</source>
        <translation>Не удалось записать %1.</translation>
    </message>
</context>
</TS>
